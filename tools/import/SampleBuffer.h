// What the library's buffer of one sensor holds while the session is played: the library's own queue, with what a
// hand-over's messages say of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "customer/aaa/aaa/lsc/SampleQueue.h"

namespace replay::import {

class SampleBuffer {
public:
    struct Filing {
        lsc::SampleQueue::Fate fate = lsc::SampleQueue::Fate::kEmpty;
        std::size_t older = 0;  // samples that a split left to each
        std::size_t newer = 0;
        std::size_t queue = 0;  // frames held
        std::int64_t last = 0;  // ns, of what is left of the batch
    };
    Filing file(std::uint32_t frame, lsc::Samples batch);

    std::size_t total() const { return mQueue.sampleCount(); }
    // The samples that a query gives; none when there are none.
    lsc::Samples window(std::uint64_t timeNs) const;
    // Times of the newest sample, and of the first one in the newest batch.
    std::optional<std::int64_t> newestUs() const;
    std::optional<std::int64_t> newestBatchUs() const;
    bool holds(std::int64_t timeUs) const;
    void clear() { mQueue.clear(); }

private:
    lsc::SampleQueue mQueue{lsc::kMaxBufferedFrames};
    std::uint32_t mFrame = 0;  // filed last
};

}  // namespace replay::import
