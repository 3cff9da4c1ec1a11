#include "customer/aaa/aaa/lsc/SampleBatch.h"

#include <algorithm>
#include <iterator>

namespace lsc {
namespace {

using NSCam::Utils::SensorData;

// Half of the sum, toward zero; exact, also where the sum itself would leave 64 bits.
std::int64_t middle(std::int64_t a, std::int64_t b) {
    const std::int64_t lower = (a & b) + ((a ^ b) >> 1);  // rounded down
    const bool halved = ((a ^ b) & 1) != 0;
    return halved && lower < 0 ? lower + 1 : lower;
}

}  // namespace

bool isEarlier(const SensorData& a, const SensorData& b) {
    return a.timestamp < b.timestamp;
}

void sortByTime(Samples& samples) {
    if (std::is_sorted(samples.begin(), samples.end(), isEarlier)) return;
    // Stable, so that every standard library gives the same order of equal stamps.
    std::stable_sort(samples.begin(), samples.end(), isEarlier);
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
    std::merge(older.begin(), older.end(), newer.begin(), newer.end(), std::back_inserter(merged), isEarlier);

    // Times are unsigned everywhere but in the order of samples: the cut is found by a scan, since negative stamps
    // come first in the list and last in unsigned order.
    const auto cut = std::find_if(merged.begin(), merged.end(), [splitTime](const SensorData& sample) {
        return static_cast<std::uint64_t>(sample.timestamp) >= static_cast<std::uint64_t>(splitTime);
    });
    return {Samples(merged.begin(), cut), Samples(cut, merged.end()), splitTime};
}

}  // namespace lsc
