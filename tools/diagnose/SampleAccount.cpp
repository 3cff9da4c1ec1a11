#include "tools/diagnose/SampleAccount.h"

#include <algorithm>
#include <utility>

namespace replay {

bool SampleAccount::started(std::int32_t sensor) {
    const auto monitor = mMonitors.find(sensor);
    if (monitor == mMonitors.end() || std::exchange(monitor->second.running, true)) return false;
    monitor->second.queue.clear();
    monitor->second.frames.clear();
    return true;
}

std::optional<lsc::SampleQueue::Filing> SampleAccount::file(std::int32_t sensor, std::uint32_t frame,
                                                            std::uint64_t timestampNs, lsc::Samples samples) {
    const auto monitor = mMonitors.find(sensor);
    if (monitor == mMonitors.end()) return std::nullopt;
    auto& frames = monitor->second.frames;
    frames.emplace_front(timestampNs, frame);
    if (frames.size() > lsc::kMaxBufferedFrames) frames.pop_back();
    return monitor->second.queue.push(frame, samples);
}

std::vector<std::int32_t> SampleAccount::registeredSensors() const {
    std::vector<std::int32_t> sensors;
    for (const auto& [sensor, monitor] : mMonitors)
        sensors.push_back(sensor);
    return sensors;
}

std::size_t SampleAccount::buffered(std::int32_t sensor) const {
    const auto monitor = mMonitors.find(sensor);
    return monitor != mMonitors.end() ? monitor->second.queue.sampleCount() : 0;
}

std::optional<std::int64_t> SampleAccount::newestNs(std::int32_t sensor) const {
    const auto monitor = mMonitors.find(sensor);
    return monitor != mMonitors.end() ? monitor->second.queue.newestNs() : std::nullopt;
}

std::optional<std::uint32_t> SampleAccount::frameAt(std::int32_t sensor, std::uint64_t startNs) const {
    const auto monitor = mMonitors.find(sensor);
    if (monitor == mMonitors.end() || monitor->second.frames.empty()) return std::nullopt;
    const auto& frames = monitor->second.frames;
    const auto found = std::ranges::find_if(frames, [startNs](const auto& its) { return its.first <= startNs; });
    return found != frames.end() ? found->second : frames.front().second;
}

}  // namespace replay
