// The hook and the failures in front of every operation, and the way back to the initial state.
#include "platform/host/Host.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/host/Guarded.h"
#include "platform/host/HostState.h"
#include "platform/host/Journal.h"

namespace host {
namespace internal {
namespace {

// Shared, so that a call under way keeps what it began with while another thread replaces it.
struct Interference {
    std::shared_ptr<const Hook> hook;
    std::shared_ptr<const Failures> failures;
};

Guarded<Interference>& interference() {
    return processWide<Guarded<Interference>>();
}

// Puts `value` in place of `member`. The old value leaves with the parameter, after the lock: what its destruction runs
// is the caller's code.
template <typename Value>
void replace(Value Interference::*member, Value value) {
    const auto state = interference().lock();
    ((*state).*member).swap(value);
    // Relaxed: see enter().
    gInterfering.store(state->hook || state->failures, std::memory_order_relaxed);
}

}  // namespace

constinit std::atomic<bool> gInterfering{false};

void interfere(Operation operation) {
    const Interference now = *interference().lock();
    if (now.hook) (*now.hook)(operation);
    if (now.failures && now.failures->throwing.contains(operation)) {
        throw std::runtime_error(std::string(nameOf(operation)));
    }
}

std::shared_ptr<const Failures> failures() {
    // Relaxed: see enter().
    return gInterfering.load(std::memory_order_relaxed) ? interference().lock()->failures : nullptr;
}

}  // namespace internal

void setHook(Hook hook) {
    internal::replace(&internal::Interference::hook, hook ? std::make_shared<const Hook>(std::move(hook)) : nullptr);
}

void setFailures(const Failures& failures) {
    internal::replace(&internal::Interference::failures,
                      failures.any() ? std::make_shared<const Failures>(failures) : nullptr);
}

void reset() {
    setHook(nullptr);
    setFailures({});
    setJournal(false);
    internal::resetLog();
    internal::resetProperties();
    internal::resetSensors();
    internal::resetOtp();
    internal::resetCustomerData();
    internal::resetSensorProvider();
}

}  // namespace host
