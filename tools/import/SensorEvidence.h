// What the log repeats of one sensor, held against what was read of it: frame numbers, counts, times. Each check gives
// in words what does not agree; nothing when all does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "tools/import/Calls.h"
#include "tools/import/SampleBuffer.h"

namespace replay::import {

class SensorEvidence {
public:
    using Doubts = std::vector<std::string>;

    // The monitor starts: the buffer is empty and numbers may begin anew. `known`: the capture holds the start.
    void start(bool known);

    // Hand-overs that frame numbers skip before `batch`; `newestUs` is the time of the newest sample before it.
    // `others` tells whether other sensors' hand-overs had a number.
    struct Gap {
        std::size_t lost = 0;  // hand-overs; 0 also where samples are lost but numbers do not tell
        bool samples = false;  // samples are missing, too
        std::string doubt;     // empty: nothing is
    };
    template <typename Others>
    Gap gapBefore(const HandOver& batch, std::optional<std::int64_t> newestUs, Others others) const;

    // The hand-over was filed, with what the log says of it; `whole`: with all its samples.
    Doubts filed(const HandOver& batch, const SampleBuffer::Filing& filing, bool whole);
    // A query was made of a buffer that holds `total` samples.
    Doubts queried(const Query& query, std::size_t total);
    // A frame that starts at `sof` (ns) was asked for. Returns how many before it ought to have been and were not.
    std::size_t asked(std::uint64_t sof);
    // No more frames are asked for. Returns how many ought to have been: those handed over longer ago than the time
    // that passed until any other was asked for.
    std::size_t unasked() const;

    // The longest time (ns) from one of the last frames handed over to the next; 0: not known.
    double longestPeriodNs() const;
    // The time stamp of the last hand-over that had one; 0: none had.
    std::uint64_t newestNs() const { return mGiven.empty() ? 0 : mGiven.back().timestamp; }
    bool wasAsked() const { return mAsked.has_value(); }

    // Something of this sensor is known to be missing.
    void lost();
    // Samples of lost hand-overs were handed over from a list, as the next hand-over.
    void filled();
    bool isSure() const { return mDoubtful == 0; }
    std::uint32_t nextFrame() const { return nextLogged() + mFilled; }
    // The number of the frame whose hand-over came with this time stamp.
    std::optional<std::uint32_t> frameAt(std::uint64_t timestamp) const;

private:
    struct Given {
        std::uint64_t timestamp = 0;
        std::uint32_t frame = 0;
        double place = 0;  // counts frames, also where the numbers begin anew
    };

    // The number that the next hand-over has in the log, if none is lost.
    std::uint32_t nextLogged() const { return mFrame ? *mFrame + 1 + static_cast<std::uint32_t>(mEmpty) : 0; }
    bool isContinuous(const HandOver& batch, std::optional<std::int64_t> newestUs) const;
    Gap gapOf(std::int64_t skipped, bool continuous, bool elsewhere) const;
    std::int64_t skippedBefore(const HandOver& batch) const;
    void follow(const HandOver& batch);
    std::optional<double> placeOf(std::uint64_t time) const;

    std::optional<std::uint32_t> mFrame;  // of the last hand-over
    std::size_t mEmpty = 0;               // hand-overs without samples since
    std::uint32_t mFilled = 0;            // hand-overs made from lists since
    std::size_t mSteps = 0;               // from one hand-over to the next
    std::int64_t mLastSkip = 0;           // numbers that the last step skipped
    double mPeriodNs = 0;                 // of the samples
    std::size_t mDoubtful = 0;            // hand-overs until what is missing has left the device's buffer
    std::optional<std::int64_t> mShort;   // samples that the device had more, while doubtful
    bool mNewestSure = true;              // the newest batch is the device's
    std::deque<Given> mGiven;             // the last hand-overs, oldest first
    std::optional<double> mAsked;         // place of the last frame that was asked for
    double mDelay = 0;                    // the most frames between one asked for and the newest hand-over
    std::int64_t mUsualStep = 1;          // places from one frame asked for to the next
};

template <typename Others>
SensorEvidence::Gap SensorEvidence::gapBefore(const HandOver& batch, std::optional<std::int64_t> newestUs,
                                              Others others) const {
    const std::int64_t skipped = skippedBefore(batch);
    if (skipped == 0) return {};
    bool elsewhere = skipped > 0;
    for (std::int64_t i = 0; elsewhere && i < skipped; ++i)
        elsewhere = others(nextLogged() + static_cast<std::uint32_t>(i));  // numbers wrap at 32 bits
    return gapOf(skipped, isContinuous(batch, newestUs), elsewhere);
}

}  // namespace replay::import
