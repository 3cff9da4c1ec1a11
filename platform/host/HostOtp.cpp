// The OTP provider, with the bytes that setSensor() gave.
#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <utility>

#include "platform/OtpData.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

namespace host {
namespace {

constexpr std::size_t kOtpMemorySize = 64 * 1024;  // bytes, the least that a memory has

using Bytes = std::vector<std::uint8_t>;

// One module's memory. The bytes are its own until they are first asked for, and move to the handed-out ones then.
struct Module {
    Bytes memory;
    const std::uint8_t* handedOut = nullptr;
};

// Any order will do that finds an equal content.
struct ByContent {
    bool operator()(const Bytes& left, const Bytes& right) const {
        if (left.size() != right.size()) return left.size() < right.size();
        return std::memcmp(left.data(), right.data(), left.size()) < 0;
    }
};

struct OtpState {
    std::map<int, Module> modules;
    bool bytesNull = false;
    std::uint8_t storedFlag = 1;
    // Every memory that a caller may still point into, each content once. Never shrinks, not even by a reset.
    std::set<Bytes, ByContent> handedOut;

    // Strong guarantee: the module is as it was when the memory cannot be kept.
    const std::uint8_t* handOut(Module& module) {
        if (!module.handedOut) {
            module.handedOut = handedOut.insert(std::move(module.memory)).first->data();
            module.memory = {};  // still full when an equal content was there before
        }
        return module.handedOut;
    }
};

internal::Guarded<OtpState>& otpState() {
    return internal::processWide<internal::Guarded<OtpState>>();
}

bool isZero(const OTPData& data) {
    constexpr OTPData kZero = {};
    return std::memcmp(&data, &kZero, sizeof data) == 0;
}

constinit TarvoOTPData gProvider;
bool gProviderPresent = true;  // guarded by TarvoOTPData::mSingleMutex

}  // namespace

void setOtpProviderPresent(bool present) {
    const std::lock_guard lock(TarvoOTPData::mSingleMutex);
    gProviderPresent = present;
    if (!present) TarvoOTPData::mSingleInstance = nullptr;
}

void setOtpBytesNull(bool null) {
    otpState().lock()->bytesNull = null;
}

void setOtpStoredFlag(std::uint8_t flag) {
    otpState().lock()->storedFlag = flag;
}

void internal::setOtp(int sensorId, std::optional<Bytes> otp) {
    if (otp) otp->resize(std::max(otp->size(), kOtpMemorySize));
    const auto state = otpState().lock();
    if (otp) {
        state->modules.insert_or_assign(sensorId, Module{std::move(*otp), nullptr});
    } else {
        state->modules.erase(sensorId);
    }
}

void internal::resetOtp() {
    setOtpProviderPresent(true);
    const auto state = otpState().lock();
    state->modules.clear();
    state->bytesNull = false;
    state->storedFlag = 1;
}

}  // namespace host

constinit TarvoOTPData* TarvoOTPData::mSingleInstance = nullptr;
constinit std::mutex TarvoOTPData::mSingleMutex;

TarvoOTPData* TarvoOTPData::getInstance() {
    // Before the lock: a hook may block, or come back here.
    host::internal::Recorded call(host::Operation::kOtpInstance);
    call.begin();
    const std::lock_guard lock(mSingleMutex);
    if (host::gProviderPresent) mSingleInstance = &host::gProvider;
    return call.answer(mSingleInstance);
}

void TarvoOTPData::getOTPData(int sensorId, OTPData& data) {
    host::internal::Recorded call(host::Operation::kGetOtpData);
    call.with("sensor", sensorId).with("zeroed", [&data] { return host::isZero(data); }).begin();
    const auto state = host::otpState().lock();
    const auto found = state->modules.find(sensorId);
    if (found != state->modules.end()) {
        data.bytes = state->bytesNull ? nullptr : state->handOut(found->second);
        data.isStored = state->storedFlag;
    }
    call.with("stored", data.isStored);
    call.answer("bytes", data.bytes != nullptr);
}
