#include "tools/report/Findings.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "tools/report/Causes.h"

namespace replay {
namespace {

using Kind = Reason::Kind;

std::string lateAdvice(std::uint64_t largestUs) {
    const std::string advice = "hand the samples over (UpdateSensorData) before the frame is asked for";
    if (largestUs == 0) return advice;  // there were none at all
    return fmt::format("{}: the samples ended up to {} us before its start", advice, largestUs);
}

// What helps against a reason that no cause explains, with its code; empty for a reason that needs no help.
std::pair<std::string, std::string> symptom(const SensorStatistics& sensor, Kind kind) {
    switch (kind) {
        case Kind::kNoMetadata:
            return {"no-metadata", "pass the frame's metadata, not a null pointer"};
        case Kind::kNoCalibration:
            return {"no-calibration",
                    "the module's OTP memory or its layout record has no valid OIS calibration: see the error "
                    "message of ReadOTPInfo (--log)"};
        case Kind::kTimingMissing:
            return {"no-timing", "write the start of frame and the exposure block into the metadata before the call"};
        case Kind::kNoMonitor:
            return {"no-monitor",
                    "start the monitor (RegisterAndStartSensorMonitor) before the first frame and stop it after "
                    "the last"};
        case Kind::kNoStartOfFrame:
            return {"no-start-of-frame", "give each exposure of a frame its own start of frame in the metadata"};
        case Kind::kTooFewSamples:
            return {"asked-too-early", fmt::format("start the monitor earlier: {} samples must be buffered before "
                                                   "the first frame is asked for",
                                                   lsc::kWindowSize)};
        case Kind::kNoLaterSample:
            return {"late-hand-overs", lateAdvice(sensor.without(kind).largest)};
        case Kind::kNoNearSample:
            if (lsc::kWindowBefore * sensor.periodUs.quantile(0.5) < sensor.exposureUs.quantile(0.5)) {
                return {"high-rate", fmt::format("deliver samples less often: the library searches {} from before "
                                                 "the start of frame, which last less than an exposure",
                                                 lsc::kWindowBefore)};
            }
            return {"asked-too-late",
                    fmt::format("ask for a frame while its samples are buffered ({} hand-overs are kept), and "
                                "check that samples and frames share one clock",
                                lsc::kMaxBufferedFrames)};
        case Kind::kOneSample:
            if (sensor.without(kind).largest == 0) {
                return {"no-rolling-shutter",
                        "call StoreRollingShutter for the mode in use: no rolling shutter is stored"};
            }
            return {"short-rolling-shutter",
                    "deliver samples more often: the rolling shutter is short compared with the sample period"};
        case Kind::kUnknownType:
        case Kind::kCalculationMode:
            return {"nothing-to-compute", "use a type and a calculation mode that compute a position"};
        case Kind::kAlreadyWritten:
        case Kind::kPlatformFailing:
            break;
    }
    return {};
}

// The cause that explains exposures at places of a kind: one of those places, before one of the whole session.
std::vector<Cause>::iterator causeOf(std::vector<Cause>& causes, Kind kind, Place place) {
    const auto local = std::ranges::find(causes, place, &Cause::place);
    if (place != Place::kAnywhere && local != causes.end()) return local;
    return std::ranges::find_if(
        causes, [kind](const Cause& its) { return std::ranges::find(its.explains, kind) != its.explains.end(); });
}

// The symptom, listed once; the end for a reason that needs no help.
std::vector<Cause>::iterator symptomOf(std::vector<Cause>& causes, const SensorStatistics& sensor, Kind kind) {
    auto [code, advice] = symptom(sensor, kind);
    if (code.empty()) return causes.end();
    const auto found = std::ranges::find(causes, code, [](const Cause& its) { return its.finding.code; });
    if (found != causes.end()) return found;
    causes.push_back(cause(std::move(code), {}, std::move(advice), {}));
    if (const std::uint64_t largest = sensor.without(kind).largest) {
        causes.back().finding.numbers.emplace_back("largest", number(largest));
    }
    return causes.end() - 1;
}

// Counts exposures without a position to the cause that explains them, or to a symptom of their own.
void attribute(std::vector<Cause>& causes, const SensorStatistics& sensor, Kind kind, Place place) {
    const double count = number(sensor.places.count(place, kind));
    if (count == 0) return;
    if (place == Place::kClockStep && sensor.clockSteps() == 0) place = Place::kSilence;
    const bool late = place == Place::kLateHandOver;
    if (late) kind = Kind::kNoLaterSample;
    // A hand-over in time would have helped, unless its samples are those of an earlier time.
    const bool helped = late && sensor.clock.quantileUs(0.5) >= 0;
    auto found = helped ? causes.end() : causeOf(causes, kind, place);
    if (found == causes.end()) found = symptomOf(causes, sensor, kind);
    if (found == causes.end()) return;
    auto& numbers = found->finding.numbers;
    if (numbers.empty() || numbers.front().first != "exposures") numbers.insert(numbers.begin(), {"exposures", 0.0});
    numbers.front().second += count;
}

}  // namespace

std::vector<Finding> findings(std::int32_t id, const SensorStatistics& sensor) {
    std::vector<Cause> causes = causesIn(sensor);
    for (std::size_t i = 0; i < kReasonKinds; ++i) {
        for (const Place place : kPlaces)
            attribute(causes, sensor, reasonKind(i), place);
    }
    std::vector<Finding> all;
    for (Cause& its : causes) {
        its.finding.sensor = id;
        all.push_back(std::move(its.finding));
    }
    return all;
}

std::vector<Finding> findings(const Statistics& statistics) {
    std::vector<Finding> all;
    for (const auto& [id, sensor] : statistics.sensors())
        std::ranges::move(findings(id, sensor), std::back_inserter(all));
    return all;
}

std::string adviceOf(const Finding& finding) {
    if (finding.numbers.empty() || finding.numbers.front().first != "exposures") return finding.advice;
    const auto exposures = static_cast<std::uint64_t>(finding.numbers.front().second);  // a count
    return counted(exposures, "exposure") + ": " + finding.advice;
}

}  // namespace replay
