// Search in the queue of buffered frames. Pure functions of their inputs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "customer/aaa/aaa/lsc/SampleBatch.h"

namespace lsc {

// The samples filed under one frame number; never empty in a queue.
struct FrameEntry {
    std::uint32_t frame;
    Samples samples;
};
using FrameQueue = std::deque<FrameEntry>;  // oldest at the front; all samples in one ascending sequence

inline constexpr std::size_t kWindowSize = 100;   // entries that a query by time returns
inline constexpr std::size_t kWindowBefore = 50;  // of them before the match, away from the ends

std::size_t totalSamples(const FrameQueue& queue);

// The first sample of the queue whose time stamp, unsigned, is not below `time` (ns).
struct SampleMatch {
    FrameQueue::const_iterator entry;
    std::size_t index;  // in the entry

    std::int64_t timestamp() const { return entry->samples[index].timestamp; }  // ns
};
std::optional<SampleMatch> firstNotBefore(const FrameQueue& queue, std::uint64_t time);

// Position of a match in the whole sequence.
std::size_t offsetOf(const FrameQueue& queue, const SampleMatch& match);

// Copies the kWindowSize samples around a match: 50 before it, itself and the 49 after it, shifted to stay within the
// queue, which must hold as many.
Samples copyWindow(const FrameQueue& queue, const SampleMatch& match);

}  // namespace lsc
