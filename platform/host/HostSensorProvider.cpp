// The provider of motion and OIS samples. All instances share the held samples; each has subscriptions of its own.
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "platform/SensorProvider.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

using NSCam::Utils::eSensorType;
using NSCam::Utils::SensorData;
using NSCam::Utils::SensorProvider;

namespace host {
namespace {

// Shared, so that a call under way keeps its listener while another thread replaces it.
using SharedListener = std::shared_ptr<const HandOverListener>;

struct ProviderState {
    bool creates = true;
    std::set<eSensorType> refused;
    std::map<eSensorType, std::vector<SensorData>> held;
    SharedListener listener;
};

internal::Guarded<ProviderState>& providerState() {
    return internal::processWide<internal::Guarded<ProviderState>>();
}

// Moves what is held to `samples`, without a copy; the caller's memory takes the next samples. Gives the listener.
SharedListener handOver(eSensorType type, std::vector<SensorData>& samples) {
    samples.clear();
    const auto state = providerState().lock();
    const auto found = state->held.find(type);
    if (found != state->held.end()) samples.swap(found->second);
    return state->listener;
}

std::int32_t numberOf(eSensorType type) {
    return static_cast<std::int32_t>(type);  // as messages show it
}

class HostSensorProvider final : public SensorProvider {
public:
    explicit HostSensorProvider(const char* user) : mUser(user ? user : "") {}

    bool enableSensor(eSensorType type, std::uint32_t interval) override {
        internal::Recorded call(Operation::kEnableSensor);
        call.with("user", mUser).with("type", numberOf(type)).with("interval", interval).begin();
        if (providerState().lock()->refused.contains(type)) return call.answer("result", false);
        mRunning.lock()->insert(type);
        return call.answer("result", true);
    }

    bool disableSensor(eSensorType type) override {
        internal::Recorded call(Operation::kDisableSensor);
        call.with("user", mUser).with("type", numberOf(type)).begin();
        return call.answer("result", mRunning.lock()->erase(type) != 0);
    }

    bool getAllSensorData(eSensorType type, std::vector<SensorData>& samples) override {
        internal::Recorded call(Operation::kGetAllSensorData);
        call.with("user", mUser).with("type", numberOf(type)).with("before", samples.size()).begin();
        if (const SharedListener listener = handOver(type, samples)) (*listener)(type, samples);
        call.with("samples", samples.size());
        return call.answer("result", !samples.empty());
    }

private:
    const std::string mUser;
    internal::Guarded<std::set<eSensorType>> mRunning;
};

}  // namespace

void setProviderCreates(bool creates) {
    providerState().lock()->creates = creates;
}

void setProviderEnables(eSensorType type, bool enables) {
    const auto state = providerState().lock();
    if (enables) {
        state->refused.erase(type);
    } else {
        state->refused.insert(type);
    }
}

void deliverSamples(eSensorType type, const std::vector<SensorData>& samples) {
    const auto state = providerState().lock();
    auto& held = state->held[type];
    held.insert(held.end(), samples.begin(), samples.end());
}

void setHandOverListener(HandOverListener listener) {
    // Outlives the lock below: what the old listener's destruction runs is the caller's code.
    SharedListener exchanged = listener ? std::make_shared<const HandOverListener>(std::move(listener)) : nullptr;
    providerState().lock()->listener.swap(exchanged);
}

void internal::resetSensorProvider() {
    setHandOverListener(nullptr);
    *providerState().lock() = {};
}

}  // namespace host

std::shared_ptr<SensorProvider> SensorProvider::createInstance(const char* user) {
    host::internal::Recorded call(host::Operation::kCreateProvider);
    call.with("user", user).begin();
    std::shared_ptr<SensorProvider> instance;
    if (host::providerState().lock()->creates) instance = std::make_shared<host::HostSensorProvider>(user);
    call.answer(instance.get());
    return instance;
}
