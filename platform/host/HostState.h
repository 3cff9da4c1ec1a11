// What the services of the host share: the entry of every operation, and each service's way back to its initial state.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/host/Host.h"

namespace host::internal {

// True while a hook or a failure is set.
extern std::atomic<bool> gInterfering;

// Calls the hook, if there still is one, with no lock of the host held. Throws what the hook throws, and for an
// operation that is to throw.
void interfere(Operation operation);

// First statement of every operation. Costs one load while nothing interferes.
inline void enter(Operation operation) {
    // Relaxed: the flag publishes nothing, hook and failures are fetched under their lock.
    if (gInterfering.load(std::memory_order_relaxed)) interfere(operation);
}

// What goes wrong at the moment; null for nothing. Costs one load while nothing interferes.
std::shared_ptr<const Failures> failures();

// What the OTP provider holds of a sensor from now on; nothing without `otp`.
void setOtp(int sensorId, const std::optional<std::vector<std::uint8_t>>& otp);

// Back to the initial state, service by service.
void resetCustomerData();
void resetLog();
void resetOtp();
void resetProperties();
void resetSensorProvider();
void resetSensors();

}  // namespace host::internal
