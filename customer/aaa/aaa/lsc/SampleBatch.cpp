#include "customer/aaa/aaa/lsc/SampleBatch.h"

#include <algorithm>
#include <iterator>

namespace lsc {
namespace {

using NSCam::Utils::SensorData;

bool earlier(const SensorData& a, const SensorData& b) {
    return a.timestamp < b.timestamp;
}

// Half of the sum, toward zero. The sum wraps at 64 bits, which a signed addition must not do by itself.
std::int64_t middle(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b)) / 2;
}

}  // namespace

void sortByTime(Samples& samples) {
    if (std::is_sorted(samples.begin(), samples.end(), earlier)) return;
    // Stable, so that every standard library gives the same order of equal stamps.
    std::stable_sort(samples.begin(), samples.end(), earlier);
}

BatchRelation relationOf(const Samples& older, const Samples& newer) {
    const std::int64_t begin = newer.front().timestamp;
    if (older.back().timestamp <= begin) return BatchRelation::kFollows;
    return older.front().timestamp >= begin ? BatchRelation::kStale : BatchRelation::kOverlaps;
}

SplitBatches splitBatches(const Samples& older, const Samples& newer) {
    const std::int64_t splitTime = middle(older.back().timestamp, newer.front().timestamp);
    Samples merged;
    merged.reserve(older.size() + newer.size());
    std::merge(older.begin(), older.end(), newer.begin(), newer.end(), std::back_inserter(merged), earlier);

    // Times are unsigned everywhere but in the order of samples: the cut is found by a scan, since negative stamps
    // come first in the list and last in unsigned order.
    const auto cut = std::find_if(merged.begin(), merged.end(), [splitTime](const SensorData& sample) {
        return static_cast<std::uint64_t>(sample.timestamp) >= static_cast<std::uint64_t>(splitTime);
    });
    return {Samples(merged.begin(), cut), Samples(cut, merged.end()), splitTime};
}

}  // namespace lsc
