#include "tools/report/Causes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <fmt/format.h>

namespace replay {
namespace {

using Kind = Reason::Kind;
using Fate = lsc::SampleQueue::Fate;

constexpr double kUsPerSecond = 1e6;
constexpr double kUnitFactor = 1000.0;

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
    const auto drift = sensor.drift();
    const double chanceUs = 2 * medianUs(sensor.periodUs);  // the newest sample is up to a period old
    const bool real = drift && drift->steady && std::abs(drift->ppm) >= kLeastPpm && chanceUs > 0;
    return real && std::abs(drift->totalUs) > chanceUs ? drift : std::nullopt;
}

// What samples ahead of their frames bring about: those of an exposure may have left the buffer when it is asked for.
std::vector<Kind> lackingAhead(const SensorStatistics& sensor) {
    constexpr std::uint64_t kFrames = lsc::kMaxBufferedFrames / 2;  // no frame is asked for that late
    const double farUs = number(kFrames) * medianUs(sensor.frameUs);
    if (static_cast<double>(sensor.clock.quantileUs(1)) <= farUs) return {};  // as in number()
    return {Kind::kNoNearSample};
}

std::vector<Kind> lackingBehind(const SensorStatistics& sensor) {
    // Samples at 0 or before it are never found, however many there are.
    const bool neverFound = sensor.without(Kind::kTooFewSamples).largest >= lsc::kWindowSize;
    if (neverFound) return {Kind::kTooFewSamples, Kind::kNoLaterSample, Kind::kNoNearSample};
    return {Kind::kNoLaterSample, Kind::kNoNearSample};
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
                 behind ? lackingBehind(sensor) : lackingAhead(sensor));
}

MaybeCause clockDrift(const SensorStatistics& sensor) {
    const auto drift = realDrift(sensor);
    if (!drift) return std::nullopt;
    return cause(
        "sample-clock-drift", {{"drift_ppm", drift->ppm}, {"total_us", drift->totalUs}},
        fmt::format("use one clock for samples and frames: that of the samples is {} by {:.0f} ppm, {:.3f} ms over "
                    "the session",
                    drift->ppm > 0 ? "fast" : "slow", std::abs(drift->ppm), std::abs(drift->totalUs) / 1000),
        drift->ppm > 0 ? lackingAhead(sensor) : std::vector{Kind::kNoLaterSample});
}

MaybeCause clockStep(const SensorStatistics& sensor) {
    const std::uint64_t count = sensor.clockSteps();
    if (count == 0) return std::nullopt;
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    const std::uint64_t longest = std::max(sensor.clockStepUs.max(), sensor.leap ? sensor.leap->us : 0) - period;
    return cause("sample-clock-step", {{"steps", number(count)}, {"largest_us", number(longest)}},
                 fmt::format("use one clock for samples and frames: that of the samples was set ahead {} {}",
                             count == 1 ? "by" : fmt::format("{} times, by up to", count), stepText(longest)),
                 {Kind::kNoNearSample}, Place::kClockStep);
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
    if (!sensor.haveFrameTimes()) return std::nullopt;
    for (const auto& [shutterNs, frames] : sensor.frameUsByShutter) {
        if (frames.count() < kEnough) continue;
        const double shutterUs = number(shutterNs) / lsc::kNsPerUs;
        const double frameUs = medianUs(frames);
        const auto wrong = misfit(shutterUs, frameUs);
        if (!wrong) continue;
        return cause("rolling-shutter",
                     {{"rolling_shutter_us", shutterUs}, {"frame_interval_us", frameUs}, {"factor", wrong->factor}},
                     fmt::format("the rolling shutter of {} ms is {} a frame interval of {:.3f} ms: {}",
                                 shortMs(shutterUs, 3), wrong->relation, frameUs / 1000, wrong->advice),
                     {Kind::kOneSample});
    }
    return std::nullopt;
}

std::uint64_t gapsOverMissing(const SensorStatistics& sensor) {
    return sensor.missedPeriodUs.countAbove(sensor.longestStepUs());
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
                 {}, Place::kMissingHandOver);
}

// Whether as many samples as the buffer holds at this rate are fewer than a query needs.
bool fillsTooSlowly(const SensorStatistics& sensor) {
    return sensor.periodUs.count() > 0 && sensor.without(Kind::kTooFewSamples).count > 0 &&
           sensor.filed() >= lsc::kMaxBufferedFrames &&
           (sensor.periodUs.count() + 1) * lsc::kMaxBufferedFrames < lsc::kWindowSize * sensor.filed();
}

std::string tooSlow(const SensorStatistics& sensor) {
    return fmt::format("at {}, {} hand-overs hold fewer than {} samples, and at most {} were buffered",
                       rateText(sensor), lsc::kMaxBufferedFrames, lsc::kWindowSize,
                       sensor.without(Kind::kTooFewSamples).largest);
}

std::string farApart(const SensorStatistics& sensor) {
    const double percent = 100.0 * (1.0 - number(kLongestPeriodUs) / medianUs(sensor.periodUs));
    return fmt::format("at {}, {} moments lie {} us or more from every sample", rateText(sensor),
                       percent < 1.0 ? "some" : fmt::format("{:.0f} % of all", percent), lsc::kMatchWindowUs);
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
    return cause(
        low ? "low-rate" : "too-few-samples",
        {{"rate_hz", rateHz(sensor)}, {"buffered", number(sensor.without(Kind::kTooFewSamples).largest)}},
        fmt::format("{}: {}", low ? "raise the sample rate to 1 kHz" : "raise the sample rate, or hand over less often",
                    slow ? tooSlow(sensor) : farApart(sensor)),
        std::move(explains));
}

// Hand-overs without a sample before the first one or after the last one, if exposures lack samples for it and more
// than the start of the sensor or its rate is behind it.
std::uint64_t silentFirst(const SensorStatistics& sensor) {
    const std::uint64_t count = sensor.places.emptyFirst();
    return count >= kEnough && sensor.places.count(Place::kSilence) > 0 ? count : 0;
}

std::uint64_t silentLast(const SensorStatistics& sensor) {
    const std::uint64_t count = sensor.places.emptyLast();
    const bool isLong = count * sensor.frameUs.quantile(0.5) > sensor.longestStepUs();
    return isLong && sensor.places.count(Place::kSilence) > 0 ? count : 0;
}

MaybeCause gaps(const SensorStatistics& sensor) {
    const std::uint64_t count = sensor.silentPeriodUs.countAbove(sensor.longestStepUs());
    const std::uint64_t longest = sensor.silentPeriodUs.max();
    std::vector<std::pair<std::string, double>> numbers;
    std::string seen;
    const auto add = [&](std::string_view name, std::uint64_t value, const std::string& text) {
        if (value == 0) return;
        numbers.emplace_back(name, number(value));
        seen += (seen.empty() ? "" : ", ") + text;
    };
    add("gaps", count,
        fmt::format("the samples have {} {}", count == 1 ? "a gap of" : fmt::format("{} gaps of up to", count),
                    stepText(longest)));
    if (count > 0) numbers.emplace_back("longest_ms", number(longest) / 1000);
    const std::uint64_t first = silentFirst(sensor);
    const std::uint64_t last = silentLast(sensor);
    add("empty_first", first,
        sensor.samples == 0 ? "no hand-over had a sample"
                            : fmt::format("the first {} hand-overs had no sample", first));
    add("empty_last", last, fmt::format("the last {} had no sample", counted(last, "hand-over")));
    if (numbers.empty()) return std::nullopt;
    return cause("sample-gaps", std::move(numbers), "find out what stops the hall sensor or its driver: " + seen, {},
                 Place::kSilence);
}

MaybeCause jitter(const SensorStatistics& sensor) {
    if (!sensor.isJittery()) return std::nullopt;
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
                 {Kind::kNoNearSample}, Place::kDiscardedBatch);
}

}  // namespace

Cause cause(std::string code, std::vector<std::pair<std::string, double>> numbers, std::string advice,
            std::vector<Reason::Kind> explains, Place place) {
    return {{std::move(code), 0, std::move(numbers), std::move(advice)}, std::move(explains), place};
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
    const bool stepped = !stuck && add(clockStep(sensor));
    if (!stepped) add(clockOffset(sensor));
    add(clockDrift(sensor));
    const bool misfits = add(rollingShutter(sensor));
    const bool sparse = add(lowRate(sensor));
    const bool uneven = add(jitter(sensor));
    const bool missed = add(missingHandOvers(sensor));
    if (stuck) return causes;  // the samples that were discarded are missing everywhere below
    const bool silent = add(gaps(sensor));
    if (!misfits) add(shortSpans(sensor));
    const bool disordered = add(discarded(sensor));
    // Each of these is why some spans have no sample near their end.
    if (!stepped && !misfits && !sparse && !uneven && !missed && !silent && !disordered) add(longSpans(sensor));
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

std::string shortMs(double us, int decimals) {
    constexpr double kShortUs = 100;
    return us < kShortUs ? fmt::format("{:.4g}", us / 1000) : fmt::format("{:.{}f}", us / 1000, decimals);
}

double rateHz(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    return period == 0 ? 0.0 : kUsPerSecond / number(period);
}

}  // namespace replay
