// What the services of the host share: the entry of every operation, and each service's way back to its initial state.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/host/Host.h"

namespace host::internal {

// True while a hook is set.
extern std::atomic<bool> gHookSet;

// Calls the hook, if there still is one, with no lock of the host held. Throws what the hook throws.
void callHook(Operation operation);

// First statement of every operation. Costs one load while there is no hook.
inline void enter(Operation operation) {
    // Relaxed: the flag publishes nothing, the hook itself is fetched under its lock.
    if (gHookSet.load(std::memory_order_relaxed)) callHook(operation);
}

// What the OTP provider holds of a sensor from now on; nothing without `otp`.
void setOtp(int sensorId, const std::optional<std::vector<std::uint8_t>>& otp);

// Back to the initial state, service by service.
void resetCustomerData();
void resetLog();
void resetMetadata();
void resetOtp();
void resetProperties();
void resetSensorProvider();
void resetSensors();

}  // namespace host::internal
