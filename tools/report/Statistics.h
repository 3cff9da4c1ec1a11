// Figures of a session, sensor by sensor, in memory that does not grow with its length.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"
#include "tools/report/Clock.h"
#include "tools/report/Histogram.h"
#include "tools/report/Places.h"

namespace replay {

// Fewer of a kind are too few to judge by.
inline constexpr std::uint64_t kEnough = 10;
// Two samples farther apart leave exposure starts between them that neither matches.
inline constexpr std::uint64_t kLongestPeriodUs = 2 * lsc::kMatchWindowUs;

struct SensorStatistics {
    // Of the exposures that got a position.
    Histogram matchUs;        // distance from the exposure start to the sample that the span starts from
    Histogram spanSamples;    // samples that were reduced to the position
    Histogram spanReadoutUs;  // rolling shutter
    // Spans that last more than twice the rolling shutter and the match window: no sample was near its end.
    std::uint64_t longSpans = 0;

    Clock clock;                       // newest sample of a hand-over, against the frame's time stamp
    Histogram frameUs;                 // time between two frames, from the time stamps of hand-overs
    Histogram frameSteps;              // from the frame number of a hand-over to that of the next
    std::uint64_t frameStepCount = 0;  // with those back, of hand-overs in the wrong order
    std::int64_t frameStepSum = 0;

    Histogram exposureUs;  // of all exposures with times
    Histogram readoutUs;   // rolling shutters stored for them
    // Time between two frames while a rolling shutter (ns) was stored; of the first kMaxShutters ones.
    static constexpr std::size_t kMaxShutters = 16;
    std::map<std::uint64_t, Histogram> frameUsByShutter;

    // Of samples that came one after the other, without those that the provider had handed over before. Late ones,
    // with a time stamp before one already seen, count for nothing.
    Histogram periodUs;
    Histogram missedPeriodUs;  // those over frame numbers without a hand-over
    // Others above kLongestPeriodUs: those in which the clock of the samples was set ahead, and those without samples.
    Histogram clockStepUs;
    Histogram silentPeriodUs;
    std::uint64_t repeated = 0;  // samples no later than one already seen

    // Batches in a row that were discarded because a time stamp seen before is more than a second later.
    struct Stuck {
        std::uint32_t frame;  // of the hand-over that brought that time stamp
        std::int64_t stampNs;
        std::uint64_t batches;
    };
    std::optional<Stuck> stuck;         // now
    std::optional<Stuck> longestStuck;  // of the session

    std::map<lsc::SampleQueue::Fate, std::uint64_t> batches;  // by what became of them

    std::uint64_t samples = 0;    // of all hand-overs
    std::uint64_t exposures = 0;  // asked for

    // Exposures without a position by Reason::Kind, and the largest number that a reason of the kind gave.
    struct Missing {
        std::uint64_t count = 0;
        std::uint64_t largest = 0;
    };
    std::array<Missing, kReasonKinds> missing{};
    Places places;  // of these exposures

    // Since the monitor was started: the latest time stamp and the frame that brought it, the newest hand-over.
    std::optional<std::int64_t> newestNs;
    std::uint32_t newestFrame = 0;
    std::uint64_t newestFrameNs = 0;  // that frame's time stamp
    std::int64_t differenceUs = 0;    // of the clock, at that hand-over
    struct Frame {
        std::uint32_t number;
        std::uint64_t timestampNs;
        std::uint64_t intervalUs;  // from the frame before; 0 when it is not known
    };
    std::optional<Frame> frame;
    // A period much longer than the frames over it took. Either the clock was set, and the clock difference stays that
    // much larger; or the sensor was silent while a hand-over was late, and the difference falls back in that time.
    struct Leap {
        std::uint64_t us;
        std::int64_t differenceUs;  // before it
        std::uint64_t frameNs;      // time stamp of its frame
    };
    std::optional<Leap> leap;

    const Missing& without(Reason::Kind kind) const { return missing[indexOf(kind)]; }
    std::uint64_t batchesOf(lsc::SampleQueue::Fate fate) const {
        const auto found = batches.find(fate);
        return found != batches.end() ? found->second : 0;
    }
    // A split batch was filed, too.
    std::uint64_t filed() const {
        return batchesOf(lsc::SampleQueue::Fate::kFiled) + batchesOf(lsc::SampleQueue::Fate::kSplit);
    }
    std::uint64_t usualFrameStep() const { return std::max<std::uint64_t>(1, frameSteps.quantile(0.5)); }
    // Hand-overs that the frame numbers lack.
    std::uint64_t missingHandOvers() const {
        const auto sum = static_cast<std::uint64_t>(std::max<std::int64_t>(0, frameStepSum));  // as tested
        return std::max(sum / usualFrameStep(), frameStepCount) - frameStepCount;
    }
    // Samples of a span that reaches over the rolling shutter; 0 without positions.
    std::uint64_t expectedSpan() const {
        const std::uint64_t period = periodUs.quantile(0.5);
        return period == 0 || spanReadoutUs.count() == 0 ? 0 : (spanReadoutUs.quantile(0.5) + period / 2) / period + 1;
    }
    // Time stamps of frames in another unit, say, are none: an exposure takes no longer than a frame.
    bool haveFrameTimes() const { return frameUs.quantile(0.5) > exposureUs.quantile(0); }
    bool isJittery() const;
    // Longer periods are gaps rather than jitter, and an exposure may start in them that no sample matches.
    std::uint64_t longestStepUs() const;
    // How often the clock of the samples was set ahead.
    std::uint64_t clockSteps() const { return clockStepUs.count() + (leap ? 1 : 0); }
    // Nothing when it was.
    std::optional<Clock::Drift> drift() const { return clockSteps() == 0 ? clock.drift() : std::nullopt; }
    // Periods longer than two median ones.
    std::uint64_t gaps() const { return periodUs.countAbove(2 * periodUs.quantile(0.5)); }
};

class Statistics : public Observer {
public:
    void monitorStarted(std::int32_t sensor) override;
    void handedOver(const HandOver& handOver) override;
    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override;

    // Calls that asked for exposures.
    std::uint64_t frames() const { return mFrames; }
    const std::map<std::int32_t, SensorStatistics>& sensors() const { return mSensors; }

private:
    static void noteFrame(SensorStatistics& sensor, const HandOver& handOver);
    static void noteFate(SensorStatistics& sensor, const HandOver& handOver);
    static void noteSamples(SensorStatistics& sensor, const HandOver& handOver, bool afterMissing);
    static void notePeriod(SensorStatistics& sensor, const HandOver& handOver, std::int64_t newNs, bool afterMissing);
    static void settleLeap(SensorStatistics& sensor, std::int64_t differenceUs, std::uint64_t timestampNs);
    void count(const ExposureOutcome& outcome);

    std::uint64_t mFrames = 0;
    std::map<std::int32_t, SensorStatistics> mSensors;
};

}  // namespace replay
