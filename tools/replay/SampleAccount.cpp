#include "tools/replay/SampleAccount.h"

#include <utility>

namespace replay {
namespace {

using Fate = TakenBatch::Fate;

constexpr std::size_t kMaxFrames = 30;  // that a buffer keeps

struct Filing {
    Fate fate;
    std::int64_t splitTimeNs = 0;
};

// Files a sorted batch as the library's buffer does.
Filing file(lsc::FrameQueue& queue, std::uint32_t frame, const lsc::Samples& batch) {
    if (batch.empty()) return {Fate::kEmpty};
    const auto relation = queue.empty() ? lsc::BatchRelation::kFollows : lsc::relationOf(queue.back().samples, batch);
    if (relation == lsc::BatchRelation::kStale) return {Fate::kDiscarded};
    Filing filing{Fate::kFiled};
    if (relation == lsc::BatchRelation::kOverlaps) {
        lsc::SplitBatches split = lsc::splitBatches(queue.back().samples, batch);
        filing = {Fate::kSplit, split.splitTime};
        queue.back().samples = std::move(split.older);
        if (queue.back().samples.empty()) queue.pop_back();
        if (!split.newer.empty()) queue.push_back({frame, std::move(split.newer)});
    } else {
        queue.push_back({frame, batch});
    }
    if (queue.size() > kMaxFrames) queue.pop_front();
    return filing;
}

}  // namespace

void SampleAccount::delivered(NSCam::Utils::eSensorType type, const lsc::Samples& samples) {
    lsc::Samples& held = mHeld[type];
    held.insert(held.end(), samples.begin(), samples.end());
}

void SampleAccount::started(std::int32_t sensor) {
    const auto monitor = mMonitors.find(sensor);
    if (monitor == mMonitors.end() || monitor->second.running) return;
    monitor->second.running = true;
    monitor->second.queue.clear();
    for (Observer* const observer : mObservers)
        observer->monitorStarted(sensor);
}

std::size_t SampleAccount::buffered(std::int32_t sensor) const {
    const Monitor* const monitor = find(sensor);
    return monitor != nullptr ? lsc::totalSamples(monitor->queue) : 0;
}

std::optional<std::int64_t> SampleAccount::newestNs(std::int32_t sensor) const {
    const Monitor* const monitor = find(sensor);
    if (monitor == nullptr || monitor->queue.empty()) return std::nullopt;
    return monitor->queue.back().samples.back().timestamp;
}

const SampleAccount::Monitor* SampleAccount::find(std::int32_t sensor) const {
    const auto monitor = mMonitors.find(sensor);
    return monitor != mMonitors.end() ? &monitor->second : nullptr;
}

void SampleAccount::took(std::int32_t sensor, std::uint32_t frame) {
    const auto monitor = mMonitors.find(sensor);
    if (monitor == mMonitors.end()) return;
    lsc::Samples batch = std::exchange(mHeld[monitor->second.type], {});
    mFiled += batch.size();
    lsc::sortByTime(batch);
    const Filing filing = file(monitor->second.queue, frame, batch);
    for (Observer* const observer : mObservers)
        observer->batchTaken({sensor, frame, filing.fate, batch, filing.splitTimeNs});
}

}  // namespace replay
