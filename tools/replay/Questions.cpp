#include "tools/replay/Questions.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay {
namespace {

using Kind = Reason::Kind;

constexpr std::uint64_t kNsPerUs = 1000;
constexpr std::int32_t kLastCalculationMode = 3;

CalcOISValueInput inputOf(const Exposure& exposure) {
    CalcOISValueInput input;
    input.sof_timestamp = exposure.startOfFrameNs;
    input.exposure_time = exposure.exposureTimeNs;
    return input;
}

// The signed distance in us from the exposure start to the nearest sample that a span may start from: any but the last.
std::optional<std::int64_t> nearestUs(const lsc::ActiveSamples& samples, std::uint64_t startUs) {
    std::optional<std::int64_t> nearest;
    for (std::int32_t i = 0; i + 1 < samples.count; ++i) {
        const std::int64_t time = samples[i].timeUs;
        if (time == 0) continue;  // an empty entry, to the library
        const std::int64_t distance = lsc::distanceUs(startUs, time);
        if (nearest && distance >= std::abs(*nearest)) continue;
        // Unsigned steps with wrap-around read as a signed distance, as in lsc::distanceUs().
        nearest = static_cast<std::int64_t>(static_cast<std::uint64_t>(time) - startUs);
    }
    return nearest;
}

Reason tooFarReason(std::int64_t distanceUs) {
    const auto distance = static_cast<std::uint64_t>(std::abs(distanceUs));
    return {Kind::kNoNearSample,
            "nearest sample " + std::to_string(distance) + " us from exposure start, " +
                (distanceUs < 0 ? "before it" : "after it"),
            distance};
}

}  // namespace

// What the library searches for an exposure, and what it finds there.
struct Questions::Search {
    Samples samples;  // as delivered
    lsc::ExposureTimes times;
    lsc::ActiveSamples active;
    lsc::SpanSearch span;

    // Time stamp of the sample behind an entry; entries are told apart by the microsecond.
    std::int64_t stampNs(std::int32_t entry) const {
        const std::int64_t timeUs = active[entry].timeUs + lsc::sampleTimeOffset(times);
        const auto found = std::ranges::find(samples, timeUs, lsc::sampleTimeUs);
        return found != samples.end() ? found->timestamp : 0;
    }
};

std::optional<Exposure> exposureOf(std::uint32_t type, const CalcOISValueInput& input) {
    switch (static_cast<CustShadingType>(type)) {  // any number may stand here
        case CustShadingType::kFrame:
        case CustShadingType::kSingleExposure:
            return Exposure{type, input.sof_timestamp, input.exposure_time};
        case CustShadingType::kSeExposureOnly:
        case CustShadingType::kMultiExposureSe:
            return Exposure{type, input.sof_timestamp_se, input.exposure_time_se};
        case CustShadingType::kMultiExposureNe:
            return Exposure{type, input.sof_timestamp_ne, input.exposure_time_ne};
        default:
            return std::nullopt;
    }
}

bool Questions::readTiming(NSCam::IMetadata& metadata, CalcOISValueInput& input) {
    return mLibrary.fillLscCalcOISValueInputInfo(&metadata, input) == 0;
}

bool Questions::computes(std::int32_t sensor, const Exposure& exposure) {
    // Type 0 with the exposure's times computes the same and is never dumped.
    std::vector<double> x;
    std::vector<double> y;
    mLibrary.CalcOISValue(CustShadingType::kFrame, inputOf(exposure), &x, &y, 0, sensor);
    return !x.empty() && !y.empty();
}

std::uint64_t Questions::readoutNs(std::int32_t sensor) {
    return mLibrary.QueryRollingShutter(sensor);
}

std::optional<SpanUsed> Questions::spanUsed(std::int32_t sensor, const Exposure& exposure) {
    const Search search = searchFor(sensor, exposure, samplesAround(sensor, exposure.startOfFrameNs));
    const lsc::SpanSearch& span = search.span;
    if (!span.startFound) return std::nullopt;
    const std::int64_t distance = lsc::distanceUs(search.times.startUs, search.active[span.start].timeUs);
    return SpanUsed{static_cast<std::uint64_t>(distance),  // not negative
                    search.stampNs(span.start), search.stampNs(span.end), span.size()};
}

Reason Questions::whyNothing(std::int32_t sensor, const Exposure& exposure) {
    if (!monitorRuns(sensor)) {
        return detailedReason(Kind::kNoMonitor,
                              mAccount.isRegistered(sensor) ? "registered, not started" : "none is registered");
    }
    if (exposure.startOfFrameNs == 0) return plainReason(Kind::kNoStartOfFrame);
    const Samples samples = samplesAround(sensor, exposure.startOfFrameNs);
    if (!samples.empty()) return whyNoMatch(searchFor(sensor, exposure, samples));
    // Every sample lies at or after 1 ns, so nothing at all means that too few are buffered.
    if (samplesAround(sensor, 1).empty()) {
        const std::size_t buffered = mAccount.buffered(sensor);
        return detailedReason(Kind::kTooFewSamples, std::to_string(buffered), buffered);
    }
    const auto newest = static_cast<std::uint64_t>(mAccount.newestNs(sensor).value_or(0));  // at least 1 ns
    const std::uint64_t late = (exposure.startOfFrameNs - newest) / kNsPerUs;
    return detailedReason(Kind::kNoLaterSample, "the newest is " + std::to_string(late) + " us before it", late);
}

Questions::Samples Questions::samplesAround(std::int32_t sensor, std::uint64_t timestampNs) {
    Samples samples;
    mLibrary.QuerySensorData(samples, sensor, 0, timestampNs);
    return samples;
}

Questions::Search Questions::searchFor(std::int32_t sensor, const Exposure& exposure, Samples samples) {
    // A rolling shutter is a 32-bit time.
    const auto shutterUs = static_cast<std::uint32_t>(readoutNs(sensor) / kNsPerUs);
    const auto times = lsc::selectTimes(CustShadingType::kFrame, inputOf(exposure), shutterUs);
    Search search{std::move(samples), *times, {}, {}};  // type 0 always has times
    search.active = lsc::activate(search.samples, lsc::sampleTimeOffset(search.times));
    search.span = lsc::findSpan(search.active, search.times);
    return search;
}

Reason Questions::whyNoMatch(const Search& search) const {
    if (!search.span.startFound) {
        if (const auto nearest = nearestUs(search.active, search.times.startUs)) return tooFarReason(*nearest);
    }
    const std::int32_t mode = mCalculationMode.value_or(0);
    if (mode < 0 || mode > kLastCalculationMode) {
        return {Kind::kCalculationMode, "calculation mode " + std::to_string(mode) + " computes nothing"};
    }
    return detailedReason(Kind::kOneSample, "rolling shutter " + std::to_string(search.times.shutterUs) + " us",
                          search.times.shutterUs);
}

}  // namespace replay
