// The samples of the last frames, in one ascending sequence: batches are filed by frame, split where two
// overlap, and found by frame or by time. Not synchronised; sends no message. An operation that throws leaves queue and
// batch as they were.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "customer/aaa/aaa/lsc/SampleWindow.h"

namespace lsc {

inline constexpr std::size_t kMaxBufferedFrames = 30;  // frames that a sensor's buffer keeps
// Samples that it keeps, far beyond any hall sensor's rate: hostile batches and time stamps must not fill the memory.
inline constexpr std::size_t kMaxBufferedSamples = std::size_t{1} << 20;

class SampleQueue {
public:
    explicit SampleQueue(std::size_t maxFrames) : mMaxFrames(maxFrames) {}

    // What became of a batch.
    enum class Fate {
        kEmpty,      // it held nothing; the queue is as it was
        kFiled,      // it is the newest entry
        kSplit,      // it overlapped the newest entry, and both were split
        kDiscarded,  // it began no later than the newest entry; the queue is as it was
    };
    struct Filing {
        Fate fate;
        std::size_t olderSamples = 0;  // of a split: what the entry before it kept
        std::int64_t splitTime = 0;    // of a split, ns
        bool dropped = false;          // there were samples beyond kMaxBufferedSamples
    };

    // Files the batch under `frame` and drops the oldest entry beyond the limit, and the oldest samples beyond
    // kMaxBufferedSamples. The batch comes back sorted; after a split it holds this frame's part. A side that a split
    // leaves empty is not kept.
    Filing push(std::uint32_t frame, Samples& batch);

    // The samples filed under `frame`, the newest entry's when there are several; null when there are none.
    const Samples* byFrame(std::uint32_t frame) const;

    // The first sample whose time stamp, unsigned, is not below `time` (ns).
    std::optional<SampleMatch> firstNotBefore(std::uint64_t time) const { return lsc::firstNotBefore(mEntries, time); }

    std::size_t offsetOf(const SampleMatch& match) const { return lsc::offsetOf(mEntries, match); }

    // The kWindowSize samples around a match; the queue must hold as many.
    Samples around(const SampleMatch& match) const { return copyWindow(mEntries, match); }

    std::size_t frameCount() const { return mEntries.size(); }
    std::size_t sampleCount() const { return totalSamples(mEntries); }
    // Time stamp of the newest sample; nothing when the queue is empty.
    std::optional<std::int64_t> newestNs() const;

    // Drops every entry and releases the memory.
    void clear();

private:
    Filing split(std::uint32_t frame, const Samples& sorted, Samples& batch);
    // Drops the samples beyond kMaxBufferedSamples; whether there were any.
    bool dropExcess() noexcept;
    // What holds between calls: bounded, no entry without samples, all samples in ascending order.
    bool isSound() const;

    const std::size_t mMaxFrames;
    FrameQueue mEntries;
};

}  // namespace lsc
