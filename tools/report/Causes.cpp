#include "tools/report/Causes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <fmt/format.h>

namespace replay {
namespace {

using Kind = Reason::Kind;
using Fate = lsc::SampleQueue::Fate;

// Fewer of a kind are too few to judge by.
constexpr std::uint64_t kEnough = 10;
constexpr double kUsPerSecond = 1e6;
constexpr double kUnitFactor = 1000.0;
// Two samples this far apart leave exposure starts between them that neither matches.
constexpr std::uint64_t kLongestPeriodUs = 2 * lsc::kMatchWindowUs;

using MaybeCause = std::optional<Cause>;

double medianUs(const Histogram& times) {
    return number(times.quantile(0.5));
}

MaybeCause futureStamp(const SensorStatistics& sensor) {
    constexpr std::uint64_t kRow = 3;  // fewer may have come in the wrong order
    const auto& stuck = sensor.longestStuck;
    if (!stuck || stuck->batches < kRow) return std::nullopt;
    return cause(
        "future-stamp",
        {{"frame", number(stuck->frame)},
         {"stamp_ns", static_cast<double>(stuck->stampNs)},  // as in number()
         {"discarded", number(stuck->batches)}},
        fmt::format("find out why a sample is stamped in the future: after the time stamp {} ns, handed over with "
                    "frame {}, {} were discarded",
                    stuck->stampNs, stuck->frame, counted(stuck->batches, "batch", "es")),
        {Kind::kTooFewSamples, Kind::kNoLaterSample, Kind::kNoNearSample, Kind::kOneSample});
}

// The drift, when it is neither chance nor too small to matter.
std::optional<Clock::Drift> realDrift(const SensorStatistics& sensor) {
    constexpr double kLeastPpm = 20.0;
    const auto drift = sensor.clock.drift();
    const double chanceUs = 2 * medianUs(sensor.periodUs);  // the newest sample is up to a period old
    const bool real = drift && drift->steady && std::abs(drift->ppm) >= kLeastPpm && chanceUs > 0;
    return real && std::abs(drift->totalUs) > chanceUs ? drift : std::nullopt;
}

MaybeCause clockOffset(const SensorStatistics& sensor) {
    const double frameUs = medianUs(sensor.frameUs);
    if (frameUs == 0 || sensor.clock.count() < kEnough) return std::nullopt;
    const auto drift = realDrift(sensor);
    // Without what a drift has added.
    const auto offsetUs =
        static_cast<double>(sensor.clock.quantileUs(0.5)) - (drift ? drift->totalUs / 2 : 0.0);  // as in number()
    // The newest sample of a hand-over comes from the frame itself, up to the start of the next one.
    const bool behind = offsetUs < -frameUs;
    if (!behind && offsetUs <= 2 * frameUs) return std::nullopt;
    return cause(behind ? "sample-clock-behind" : "sample-clock-ahead",
                 {{"offset_us", offsetUs}, {"frame_interval_us", frameUs}},
                 fmt::format("use one clock for samples and frames: in the median, the newest sample of a hand-over is "
                             "{:.3f} ms {} the time stamp of its frame",
                             std::abs(offsetUs) / 1000, behind ? "before" : "after"),
                 {Kind::kNoLaterSample, Kind::kNoNearSample});
}

MaybeCause clockDrift(const SensorStatistics& sensor) {
    const auto drift = realDrift(sensor);
    if (!drift) return std::nullopt;
    return cause(
        "sample-clock-drift", {{"drift_ppm", drift->ppm}, {"total_us", drift->totalUs}},
        fmt::format("use one clock for samples and frames: that of the samples is {} by {:.0f} ppm, {:.3f} ms over "
                    "the session",
                    drift->ppm > 0 ? "fast" : "slow", std::abs(drift->ppm), std::abs(drift->totalUs) / 1000),
        {Kind::kNoLaterSample, Kind::kNoNearSample});
}

// A rolling shutter that does not fit the frame interval: the factor by which it seems wrong, 1 for an unknown one, and
// the words around the interval.
struct Misfit {
    double factor;
    const char* relation;
    const char* advice;
};

std::optional<Misfit> misfit(double shutterUs, double frameUs) {
    constexpr double kTolerance = 1.05;
    const double longestUs = kTolerance * frameUs;
    if (shutterUs <= longestUs / kUnitFactor) {
        return Misfit{1 / kUnitFactor, "about a thousandth of what fits", "give it in ns"};
    }
    if (shutterUs <= longestUs) return std::nullopt;
    if (shutterUs <= 2 * longestUs) {
        return Misfit{2.0, "too long for", "half of it would fit, so check whether it is counted twice"};
    }
    // Thousand times as long as a readout that is no shorter than a fiftieth of the frame.
    if (shutterUs <= kUnitFactor * longestUs && shutterUs >= kUnitFactor / 50 * frameUs) {
        return Misfit{kUnitFactor, "about a thousand times what fits", "give it in ns"};
    }
    return Misfit{1.0, "too long for", "check it for the mode in use"};
}

MaybeCause rollingShutter(const SensorStatistics& sensor) {
    for (const auto& [shutterNs, frames] : sensor.frameUsByShutter) {
        if (frames.count() < kEnough) continue;
        const double shutterUs = number(shutterNs) / lsc::kNsPerUs;
        const double frameUs = medianUs(frames);
        const auto wrong = misfit(shutterUs, frameUs);
        if (!wrong) continue;
        return cause("rolling-shutter",
                     {{"rolling_shutter_us", shutterUs}, {"frame_interval_us", frameUs}, {"factor", wrong->factor}},
                     fmt::format("the rolling shutter of {:.3f} ms is {} a frame interval of {:.3f} ms: {}",
                                 shutterUs / 1000, wrong->relation, frameUs / 1000, wrong->advice),
                     {Kind::kOneSample, Kind::kNoNearSample});
    }
    return std::nullopt;
}

bool isJittery(const SensorStatistics& sensor) {
    const auto& periods = sensor.periodUs;
    return periods.count() >= 10 * kEnough && number(periods.quantile(0.95)) > 1.5 * medianUs(periods);
}

// Longer periods are gaps rather than jitter, and an exposure may start in them that no sample matches.
std::uint64_t longestStepUs(const SensorStatistics& sensor) {
    return std::max(kLongestPeriodUs, 2 * sensor.periodUs.quantile(isJittery(sensor) ? 0.95 : 0.5));
}

std::uint64_t gapsOverMissing(const SensorStatistics& sensor) {
    return sensor.missedPeriodUs.countAbove(longestStepUs(sensor));
}

// A gap makes the newest sample no later than it is long.
std::vector<Kind> lackingIn(const Histogram& periods, const SensorStatistics& sensor) {
    std::vector<Kind> kinds = {Kind::kNoNearSample};
    if (periods.max() >= sensor.without(Kind::kNoLaterSample).largest) kinds.push_back(Kind::kNoLaterSample);
    return kinds;
}

MaybeCause missingHandOvers(const SensorStatistics& sensor) {
    const std::uint64_t missing = sensor.missingHandOvers();
    if (missing == 0) return std::nullopt;
    const bool lost = gapsOverMissing(sensor) > 0;
    return cause("missing-hand-overs",
                 {{"missing", number(missing)}, {"longest_gap_ms", number(sensor.missedPeriodUs.max()) / 1000}},
                 fmt::format("call UpdateSensorData for every frame: {} no hand-over{}",
                             missing == 1 ? "1 frame number has" : fmt::format("{} frame numbers have", missing),
                             lost ? ", and their samples are lost" : ""),
                 lost ? lackingIn(sensor.missedPeriodUs, sensor) : std::vector<Kind>());
}

// Whether as many samples as the buffer holds at this rate are fewer than a query needs.
bool fillsTooSlowly(const SensorStatistics& sensor) {
    return sensor.without(Kind::kTooFewSamples).count > 0 && sensor.filed() >= lsc::kMaxBufferedFrames &&
           (sensor.periodUs.count() + 1) * lsc::kMaxBufferedFrames < lsc::kWindowSize * sensor.filed();
}

std::string tooSlow(const SensorStatistics& sensor) {
    return fmt::format("at {}, {} hand-overs hold fewer than {} samples: at most {} were buffered", rateText(sensor),
                       lsc::kMaxBufferedFrames, lsc::kWindowSize, sensor.without(Kind::kTooFewSamples).largest);
}

std::string farApart(const SensorStatistics& sensor) {
    const double percent = 100.0 * (1.0 - number(kLongestPeriodUs) / medianUs(sensor.periodUs));
    return fmt::format("raise the sample rate to 1 kHz: at {}, {} moments lie {} us or more from every sample",
                       rateText(sensor), percent < 1.0 ? "some" : fmt::format("{:.0f} % of all", percent),
                       lsc::kMatchWindowUs);
}

MaybeCause lowRate(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    const bool missed = sensor.without(Kind::kNoNearSample).count > 0;
    const bool low = period > kLongestPeriodUs || (period == kLongestPeriodUs && missed);
    const bool slow = fillsTooSlowly(sensor);
    if (!low && !slow) return std::nullopt;
    std::vector<Kind> explains;
    if (slow) explains.push_back(Kind::kTooFewSamples);
    if (low) explains.push_back(Kind::kNoNearSample);
    return cause(low ? "low-rate" : "too-few-samples",
                 {{"rate_hz", rateHz(sensor)}, {"buffered", number(sensor.without(Kind::kTooFewSamples).largest)}},
                 slow ? tooSlow(sensor) : farApart(sensor), std::move(explains));
}

MaybeCause gaps(const SensorStatistics& sensor) {
    const std::uint64_t all = sensor.periodUs.countAbove(longestStepUs(sensor));
    const std::uint64_t count = all - gapsOverMissing(sensor);
    if (count == 0) return std::nullopt;
    const std::uint64_t longest = sensor.periodUs.max();
    return cause("sample-gaps", {{"gaps", number(count)}, {"longest_ms", number(longest) / 1000}},
                 fmt::format("find out what stops the hall sensor or its driver: the samples have {} {}",
                             count == 1 ? "a gap of" : fmt::format("{} gaps of up to", count), stepText(longest)),
                 lackingIn(sensor.periodUs, sensor));
}

MaybeCause jitter(const SensorStatistics& sensor) {
    if (!isJittery(sensor)) return std::nullopt;
    const double median = medianUs(sensor.periodUs);
    const double late = number(sensor.periodUs.quantile(0.95));
    std::vector<Kind> explains;
    if (sensor.periodUs.max() >= kLongestPeriodUs) explains.push_back(Kind::kNoNearSample);
    return cause(
        "sample-jitter", {{"median_us", median}, {"above_5_percent_us", late}},
        fmt::format("read the hall sensor at even intervals, and take the time stamps then: the median interval is "
                    "{:.0f} us, but 5 % exceed {:.0f} us",
                    median, late),
        std::move(explains));
}

MaybeCause shortSpans(const SensorStatistics& sensor) {
    const std::uint64_t used = sensor.spanSamples.quantile(0.5);
    const std::uint64_t expected = sensor.expectedSpan();
    if (sensor.spanSamples.count() < kEnough || 4 * (used + 1) >= 3 * expected) return std::nullopt;
    return cause("short-spans", {{"used", number(used)}, {"expected", number(expected)}},
                 fmt::format("hand over the samples of the whole readout before the frame is asked for, at a rate at "
                             "which {} of them cover it: the median span has {} samples of {} expected",
                             lsc::kWindowBefore, used, expected),
                 {});
}

// Named beside the cause of missing samples: it tells of positions, the others of exposures without one.
MaybeCause longSpans(const SensorStatistics& sensor) {
    if (sensor.longSpans == 0) return std::nullopt;
    const std::uint64_t used = sensor.spanSamples.max();
    const std::uint64_t expected = sensor.expectedSpan();
    return cause(
        "long-spans", {{"spans", number(sensor.longSpans)}, {"used", number(used)}, {"expected", number(expected)}},
        fmt::format("deliver a sample every millisecond: {} of {} went on past the readout, because no sample was "
                    "within {} us of its end, and had up to {} samples with {} expected",
                    sensor.longSpans, counted(sensor.spanSamples.count(), "span"), lsc::kMatchWindowUs, used, expected),
        {});
}

MaybeCause discarded(const SensorStatistics& sensor) {
    const std::uint64_t count = sensor.batchesOf(Fate::kDiscarded);
    if (count == 0) return std::nullopt;
    return cause("discarded-batches", {{"discarded", number(count)}},
                 "hand over each batch after those that begin before it: " + counted(count, "batch", "es") +
                     (count == 1 ? " was" : " were") + " discarded",
                 {Kind::kNoNearSample});
}

}  // namespace

Cause cause(std::string code, std::vector<std::pair<std::string, double>> numbers, std::string advice,
            std::vector<Reason::Kind> explains) {
    return {{std::move(code), 0, std::move(numbers), std::move(advice)}, std::move(explains)};
}

std::string counted(std::uint64_t count, std::string_view what, std::string_view ending) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : ending);
}

std::vector<Cause> causesIn(const SensorStatistics& sensor) {
    std::vector<Cause> causes;
    const auto add = [&causes](MaybeCause found) {
        if (found) causes.push_back(std::move(*found));
        return found.has_value();
    };
    const bool stuck = add(futureStamp(sensor));
    add(clockOffset(sensor));
    add(clockDrift(sensor));
    const bool misfits = add(rollingShutter(sensor));
    add(lowRate(sensor));
    add(jitter(sensor));
    add(missingHandOvers(sensor));
    if (stuck) return causes;  // the samples that were discarded are missing everywhere below
    add(gaps(sensor));
    if (!misfits) add(shortSpans(sensor));
    add(discarded(sensor));
    if (!misfits) add(longSpans(sensor));
    return causes;
}

std::string rateText(const SensorStatistics& sensor) {
    const double hz = rateHz(sensor);
    if (hz == 0) return "unknown";
    return hz < 1 ? "less than 1 Hz" : fmt::format("{:.0f} Hz", hz);
}

std::string stepText(std::uint64_t us) {
    constexpr std::uint64_t kDay = 86'400'000'000;
    return us > kDay ? "more than a day" : fmt::format("{:.3f} ms", number(us) / 1000);
}

double rateHz(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    return period == 0 ? 0.0 : kUsPerSecond / number(period);
}

}  // namespace replay
