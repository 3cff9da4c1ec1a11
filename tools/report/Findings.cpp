#include "tools/report/Findings.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "tools/report/Causes.h"

namespace replay {
namespace {

using Kind = Reason::Kind;

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
            return {"late-hand-overs", fmt::format("hand the samples over (UpdateSensorData) before the frame is "
                                                   "asked for: the samples ended up to {} us before its "
                                                   "start",
                                                   sensor.without(kind).largest)};
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

// Counts the exposures without a position to the first cause that explains it, or to a symptom of their own.
void attribute(std::vector<Cause>& causes, const SensorStatistics& sensor, Kind kind) {
    const double count = number(sensor.without(kind).count);
    if (count == 0) return;
    auto found = std::ranges::find_if(
        causes, [kind](const Cause& its) { return std::ranges::find(its.explains, kind) != its.explains.end(); });
    if (found == causes.end()) {
        auto [code, advice] = symptom(sensor, kind);
        if (code.empty()) return;
        found = std::ranges::find(causes, code, [](const Cause& its) { return its.finding.code; });
        if (found == causes.end()) {
            causes.push_back(cause(std::move(code), {}, std::move(advice), {}));
            found = causes.end() - 1;
            if (const std::uint64_t largest = sensor.without(kind).largest) {
                found->finding.numbers.emplace_back("largest", number(largest));
            }
        }
    }
    auto& numbers = found->finding.numbers;
    if (numbers.empty() || numbers.front().first != "exposures") numbers.insert(numbers.begin(), {"exposures", 0.0});
    numbers.front().second += count;
}

}  // namespace

std::vector<Finding> findings(std::int32_t id, const SensorStatistics& sensor) {
    std::vector<Cause> causes = causesIn(sensor);
    for (std::size_t i = 0; i < kReasonKinds; ++i)
        attribute(causes, sensor, reasonKind(i));
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
