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
}

}  // namespace host

constinit TarvoOTPData* TarvoOTPData::mSingleInstance = nullptr;
constinit std::mutex TarvoOTPData::mSingleMutex;

TarvoOTPData* TarvoOTPData::getInstance() {
    // Before the lock: a hook may block, or come back here.
    host::internal::enter(host::Operation::kOtpInstance);
    const std::lock_guard lock(mSingleMutex);
    if (host::gProviderPresent) mSingleInstance = &host::gProvider;
    return mSingleInstance;
}

void TarvoOTPData::getOTPData(int sensorId, OTPData& data) {
    host::internal::enter(host::Operation::kGetOtpData);
    const auto state = host::otpState().lock();
    const auto found = state->modules.find(sensorId);
    if (found == state->modules.end()) return;
    data.bytes = state->bytesNull ? nullptr : state->handOut(found->second);
    data.isStored = 1;
}
