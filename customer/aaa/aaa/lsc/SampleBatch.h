// One frame's batch of OIS samples, and its relation to the batch before it. Pure functions of their inputs.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/SensorProvider.h"

namespace lsc {

// Samples in ascending order of their signed time stamps wherever this project stores them.
using Samples = std::vector<NSCam::Utils::SensorData>;

// The order of samples: by time stamp, signed.
bool isEarlier(const NSCam::Utils::SensorData& a, const NSCam::Utils::SensorData& b);

// Sorts by time stamp; equal stamps keep their order. A sorted batch costs one scan.
void sortByTime(Samples& samples);

// Where a sorted batch begins, compared with the sorted batch before it; neither is empty.
enum class BatchRelation {
    kFollows,   // it begins no earlier than the older batch ends
    kOverlaps,  // it begins within the older batch
    kStale,     // it begins no later than the older batch begins
};
BatchRelation relationOf(const Samples& older, const Samples& newer);

// Two overlapping batches, split at the middle of their overlap. Both sides hold samples unless time stamps are
// negative: those come first in order of time and last in the unsigned order of the cut. No sample is lost.
struct SplitBatches {
    Samples older;
    Samples newer;
    std::int64_t splitTime;  // ns
};
SplitBatches splitBatches(const Samples& older, const Samples& newer);

}  // namespace lsc
