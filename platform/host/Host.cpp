// The hook in front of every operation, and the way back to the initial state.
#include "platform/host/Host.h"

#include <memory>
#include <utility>

#include "platform/host/Guarded.h"
#include "platform/host/HostState.h"

namespace host {
namespace internal {
namespace {

// Shared, so that a call under way keeps its hook while another thread replaces it.
using SharedHook = std::shared_ptr<const Hook>;

Guarded<SharedHook>& hookState() {
    return processWide<Guarded<SharedHook>>();
}

}  // namespace

constinit std::atomic<bool> gHookSet{false};

void callHook(Operation operation) {
    const SharedHook hook = *hookState().lock();
    if (hook) (*hook)(operation);
}

}  // namespace internal

void setHook(Hook hook) {
    // Outlives the lock below: what the old hook's destruction runs is the caller's code.
    internal::SharedHook exchanged = hook ? std::make_shared<const Hook>(std::move(hook)) : nullptr;
    const auto state = internal::hookState().lock();
    // Relaxed: see enter().
    internal::gHookSet.store(exchanged != nullptr, std::memory_order_relaxed);
    state->swap(exchanged);
}

void reset() {
    setHook(nullptr);
    internal::resetLog();
    internal::resetMetadata();
    internal::resetProperties();
    internal::resetSensors();
    internal::resetOtp();
    internal::resetCustomerData();
    internal::resetSensorProvider();
}

}  // namespace host
