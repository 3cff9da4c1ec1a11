// The OTP provider, with the bytes that setSensor() gave.
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "platform/OtpData.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

namespace host {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Memory = std::shared_ptr<const Bytes>;

struct OtpState {
    std::map<int, Memory> modules;
    bool bytesNull = false;
    std::uint8_t storedFlag = 1;
    std::set<Memory> handedOut;  // a caller may still point into these
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

void internal::setOtp(int sensorId, const std::optional<Bytes>& otp) {
    const auto state = otpState().lock();
    if (otp) {
        // A copy has no room behind its last byte, where a read would go unnoticed.
        state->modules.insert_or_assign(sensorId, std::make_shared<const Bytes>(otp->begin(), otp->end()));
    } else {
        state->modules.erase(sensorId);
    }
}

void internal::resetOtp() {
    setOtpProviderPresent(true);
    *otpState().lock() = {};
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
        state->handedOut.insert(found->second);
        data.bytes = state->bytesNull ? nullptr : found->second->data();
        data.isStored = state->storedFlag;
    }
    call.with("stored", data.isStored);
    call.answer("bytes", data.bytes != nullptr);
}
