#include "tools/replay/import/SensorGuess.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace replay::import {
namespace {

std::optional<std::int32_t> sensorNamedBy(const CallData& data) {
    if (const auto* call = std::get_if<FrameCall>(&data)) return call->sensor;
    if (const auto* call = std::get_if<RegisterCall>(&data)) return call->sensor;
    if (const auto* call = std::get_if<UnregisterCall>(&data)) return call->sensor;
    if (const auto* call = std::get_if<RollingShutter>(&data)) return call->sensor;
    if (const auto* call = std::get_if<OtpReadCall>(&data)) return call->sensor;
    return std::nullopt;
}

// Walks through the calls in order and knows which sensors have a monitor.
class Namer {
public:
    Namer(const Capture& capture, std::vector<std::int32_t> named) : mNamed(std::move(named)) {
        for (const std::int32_t sensor : mNamed)
            mTypes[sensor] = typeOf(capture, sensor);
        for (const Call& call : capture.calls) {
            const auto* const update = std::get_if<UpdateCall>(&call.data);
            if (update != nullptr && update->sensor) mOfThread[update->thread].insert(*update->sensor);
        }
    }

    void follow(const RegisterCall& call) {
        if (call.started && std::ranges::find(mRegistered, call.sensor) == mRegistered.end()) {
            mRegistered.push_back(call.sensor);
        }
    }
    void follow(const UnregisterCall& call) { std::erase(mRegistered, call.sensor); }

    std::int32_t sensorOf(const UpdateCall& call) {
        if (call.sensor) return *call.sensor;
        std::vector<std::int32_t> candidates = mRegistered.empty() ? mNamed : mRegistered;
        if (call.type) keep(candidates, [&](std::int32_t sensor) { return mTypes[sensor] == *call.type; });
        if (candidates.size() > 1) ++mAssumed;
        const auto& ofThread = mOfThread[call.thread];
        keep(candidates, [&](std::int32_t sensor) { return ofThread.size() == 1 && ofThread.contains(sensor); });
        // A sensor's samples are handed over once a frame.
        keep(candidates, [&](std::int32_t sensor) { return mFrames[sensor] != call.frame; });
        return candidates.front();
    }
    void filed(std::int32_t sensor, const UpdateCall& call) { mFrames[sensor] = call.frame; }

    std::int32_t sensorOf(const FrameCall& call) {
        if (call.sensor) return mFrameSensors[call.thread] = *call.sensor;
        const auto before = mFrameSensors.find(call.thread);
        if (mNamed.size() > 1) ++mAssumed;
        if (before != mFrameSensors.end()) return before->second;
        return mRegistered.empty() ? mNamed.front() : mRegistered.front();
    }

    std::size_t assumed() const { return mAssumed; }

private:
    // Leaves those that the condition holds for, or all when it holds for none.
    template <typename Condition>
    static void keep(std::vector<std::int32_t>& sensors, Condition condition) {
        if (std::ranges::any_of(sensors, condition)) {
            std::erase_if(sensors, [&](std::int32_t sensor) { return !condition(sensor); });
        }
    }

    const std::vector<std::int32_t> mNamed;
    std::map<std::int32_t, std::int32_t> mTypes;
    std::vector<std::int32_t> mRegistered;
    std::map<std::size_t, std::set<std::int32_t>> mOfThread;       // whose samples a thread hands over
    std::map<std::int32_t, std::optional<std::uint32_t>> mFrames;  // newest frame of each sensor
    std::map<std::size_t, std::int32_t> mFrameSensors;             // newest sensor that each thread asked for
    std::size_t mAssumed = 0;
};

}  // namespace

std::vector<std::int32_t> namedSensors(const Capture& capture) {
    std::vector<std::int32_t> sensors;
    for (const Call& call : capture.calls) {
        const auto sensor = sensorNamedBy(call.data);
        if (sensor && std::ranges::find(sensors, *sensor) == sensors.end()) sensors.push_back(*sensor);
    }
    return sensors;
}

std::int32_t typeOf(const Capture& capture, std::int32_t sensor) {
    std::optional<std::int32_t> delivered;
    for (const Call& call : capture.calls) {
        const auto* const monitor = std::get_if<RegisterCall>(&call.data);
        if (monitor != nullptr && monitor->sensor == sensor && monitor->type) return *monitor->type;
        const auto* const update = std::get_if<UpdateCall>(&call.data);
        if (update != nullptr && update->type) delivered = update->type;
    }
    return delivered.value_or(kAssumedType);
}

void nameSensors(Capture& capture, std::vector<std::string>& assumptions) {
    std::vector<std::int32_t> named = namedSensors(capture);
    if (named.empty()) {
        named.push_back(0);
        assumptions.emplace_back("no message names a sensor: sensor 0");
    }
    const std::size_t sensors = named.size();
    Namer namer(capture, std::move(named));
    for (Call& call : capture.calls) {
        if (auto* const update = std::get_if<UpdateCall>(&call.data)) {
            update->sensor = namer.sensorOf(*update);
            namer.filed(*update->sensor, *update);
        } else if (auto* const frame = std::get_if<FrameCall>(&call.data)) {
            frame->sensor = namer.sensorOf(*frame);
        } else if (const auto* const monitor = std::get_if<RegisterCall>(&call.data)) {
            namer.follow(*monitor);
        } else if (const auto* const end = std::get_if<UnregisterCall>(&call.data)) {
            namer.follow(*end);
        }
    }
    if (sensors > 1) {
        assumptions.push_back(
            "batches of samples name no sensor: they belong to the one whose calculations list their "
            "samples; where none does, to the thread's sensor, or to the first without a batch in "
            "that frame (" +
            std::to_string(namer.assumed()) + " calls)");
    }
}

}  // namespace replay::import
