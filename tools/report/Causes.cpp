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
    return cause("future-stamp",
                 {{"frame", number(stuck->frame)},
                  {"stamp_ns", static_cast<double>(stuck->stampNs)},  // as in number()
                  {"discarded", number(stuck->batches)}},
                 fmt::format("keep time stamps of the future out of the samples: after that of {} ns, handed over with "
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
                 fmt::format("give samples and frames the same clock: the newest sample of a hand-over is {:.3f} ms {} "
                             "the time stamp of its frame",
                             std::abs(offsetUs) / 1000, behind ? "before" : "after"),
                 {Kind::kNoLaterSample, Kind::kNoNearSample});
}

MaybeCause clockDrift(const SensorStatistics& sensor) {
    const auto drift = realDrift(sensor);
    if (!drift) return std::nullopt;
    return cause("sample-clock-drift", {{"drift_ppm", drift->ppm}, {"total_us", drift->totalUs}},
                 fmt::format("give samples and frames the same clock: that of the samples is {} by {:.0f} ppm, {:.3f} "
                             "ms over the session",
                             drift->ppm > 0 ? "fast" : "slow", std::abs(drift->ppm), std::abs(drift->totalUs) / 1000),
                 {Kind::kNoLaterSample, Kind::kNoNearSample});
}

// The advice on a rolling shutter that does not fit the frame interval, with the factor by which it seems wrong; 1 for
// an unknown one. Nothing for one that fits.
std::optional<std::pair<double, std::string>> misfit(double shutterUs, double frameUs) {
    constexpr double kTolerance = 1.05;
    const double longestUs = kTolerance * frameUs;
    if (shutterUs <= longestUs / kUnitFactor) {
        return std::pair(1 / kUnitFactor, "a thousandth of what fits: give it in ns");
    }
    if (shutterUs <= longestUs) return std::nullopt;
    if (shutterUs <= 2 * longestUs) return std::pair(2.0, "too long, half of it fits: is it counted double?");
    // Thousand times as long as a readout that is no shorter than a fiftieth of the frame.
    if (shutterUs <= kUnitFactor * longestUs && shutterUs >= kUnitFactor / 50 * frameUs) {
        return std::pair(kUnitFactor, "a thousand times what fits: give it in ns");
    }
    return std::pair(1.0, "too long: check it for the mode in use");
}

MaybeCause rollingShutter(const SensorStatistics& sensor) {
    for (const auto& [shutterNs, frames] : sensor.frameUsByShutter) {
        if (frames.count() < kEnough) continue;
        const double shutterUs = number(shutterNs) / lsc::kNsPerUs;
        const auto wrong = misfit(shutterUs, medianUs(frames));
        if (!wrong) continue;
        return cause(
            "rolling-shutter",
            {{"rolling_shutter_us", shutterUs}, {"frame_interval_us", medianUs(frames)}, {"factor", wrong->first}},
            fmt::format("a rolling shutter of {:.3f} ms at a frame interval of {:.3f} ms is {}", shutterUs / 1000,
                        medianUs(frames) / 1000, wrong->second),
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
                 fmt::format("hand over samples (UpdateSensorData) for every frame: {} of the frame numbers {} none{}",
                             missing, missing == 1 ? "has" : "have", lost ? ", and their samples are lost" : ""),
                 lost ? lackingIn(sensor.missedPeriodUs, sensor) : std::vector<Kind>());
}

// Whether as many samples as the buffer holds at this rate are fewer than a query needs.
bool fillsTooSlowly(const SensorStatistics& sensor) {
    return sensor.without(Kind::kTooFewSamples).count > 0 && sensor.filed() >= lsc::kMaxBufferedFrames &&
           (sensor.periodUs.count() + 1) * lsc::kMaxBufferedFrames < lsc::kWindowSize * sensor.filed();
}

MaybeCause lowRate(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    const double share = 1.0 - number(kLongestPeriodUs) / medianUs(sensor.periodUs);
    const bool missed = sensor.without(Kind::kNoNearSample).count > 0;
    const bool low = period > kLongestPeriodUs || (period == kLongestPeriodUs && missed);
    if (!low && !fillsTooSlowly(sensor)) return std::nullopt;
    std::string advice =
        fillsTooSlowly(sensor)
            ? fmt::format(
                  "the samples come too slowly ({:.0f} Hz) for {} hand-overs to bring {}: at most {} were "
                  "buffered",
                  rateHz(sensor), lsc::kMaxBufferedFrames, lsc::kWindowSize,
                  sensor.without(Kind::kTooFewSamples).largest)
            : fmt::format(
                  "sample rate {:.0f} Hz: {:.0f} % of all moments lie {} us or more from every sample; at 1 "
                  "kHz none does",
                  rateHz(sensor), 100.0 * share, lsc::kMatchWindowUs);
    std::vector<Kind> explains;
    if (fillsTooSlowly(sensor)) explains.push_back(Kind::kTooFewSamples);
    if (low) explains.push_back(Kind::kNoNearSample);
    return cause(low ? "low-rate" : "too-few-samples",
                 {{"rate_hz", rateHz(sensor)}, {"buffered", number(sensor.without(Kind::kTooFewSamples).largest)}},
                 std::move(advice), std::move(explains));
}

MaybeCause gaps(const SensorStatistics& sensor) {
    const std::uint64_t all = sensor.periodUs.countAbove(longestStepUs(sensor));
    const std::uint64_t count = all - gapsOverMissing(sensor);
    if (count == 0) return std::nullopt;
    const double longestMs = number(sensor.periodUs.max()) / 1000;
    return cause("sample-gaps", {{"gaps", number(count)}, {"longest_ms", longestMs}},
                 fmt::format("the samples have {} of up to {:.3f} ms: look for what stops the hall sensor or its "
                             "driver",
                             counted(count, "gap"), longestMs),
                 lackingIn(sensor.periodUs, sensor));
}

MaybeCause jitter(const SensorStatistics& sensor) {
    if (!isJittery(sensor)) return std::nullopt;
    const double median = medianUs(sensor.periodUs);
    const double late = number(sensor.periodUs.quantile(0.95));
    std::vector<Kind> explains;
    if (sensor.periodUs.max() >= kLongestPeriodUs) explains.push_back(Kind::kNoNearSample);
    return cause("sample-jitter", {{"median_us", median}, {"above_5_percent_us", late}},
                 fmt::format("sample the hall sensor evenly, and take time stamps when it is read: the median step is "
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
                             "which {} of them reach over it: {} samples were used of {} expected",
                             lsc::kWindowBefore, used, expected),
                 {});
}

MaybeCause discarded(const SensorStatistics& sensor) {
    const std::uint64_t count = sensor.batchesOf(Fate::kDiscarded);
    if (count == 0) return std::nullopt;
    return cause("discarded-batches", {{"discarded", number(count)}},
                 counted(count, "discarded batch", "es") + ": deliver a batch only after those that begin before it",
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
    return causes;
}

double rateHz(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    return period == 0 ? 0.0 : kUsPerSecond / number(period);
}

}  // namespace replay
