// One frame's batch of OIS samples, and how it meets the batch before it. Pure functions of their inputs.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/SensorProvider.h"

namespace lsc {

// Samples in ascending order of their signed time stamps wherever this project stores them.
using Samples = std::vector<NSCam::Utils::SensorData>;

// Sorts by time stamp, signed; equal stamps keep their order. A sorted batch costs one scan.
void sortByTime(Samples& samples);

// How a sorted batch lies in time to the sorted batch before it; both hold samples.
enum class BatchRelation {
    kFollows,   // it begins no earlier than the older batch ends
    kOverlaps,  // it begins within the older batch
    kStale,     // it begins no later than the older batch begins
};
BatchRelation relationOf(const Samples& older, const Samples& newer);

// Two overlapping batches divided anew at the middle of their overlap. A side may be empty when time stamps are
// negative or the sum of two of them leaves the range of 64 bits; no sample is lost.
struct SplitBatches {
    Samples older;
    Samples newer;
    std::int64_t splitTime;  // ns
};
SplitBatches splitBatches(const Samples& older, const Samples& newer);

}  // namespace lsc
