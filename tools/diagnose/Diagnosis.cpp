#include "tools/diagnose/Diagnosis.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

using Kind = Reason::Kind;

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
    const auto distance = narrow<std::uint64_t>(std::abs(distanceUs));
    return {
        Kind::kNoNearSample,
        fmt::format("nearest sample {} us from exposure start, {} it", distance, distanceUs < 0 ? "before" : "after"),
        distance};
}

}  // namespace

// What the library searches for an exposure, and what it finds there.
struct Diagnosis::Search {
    lsc::Samples samples;  // as delivered
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

std::optional<lsc::ExposureTimes> Diagnosis::timesOf(std::int32_t sensor, std::uint32_t type,
                                                     const CalcOISValueInput& input) {
    const auto shutterUs = narrow<std::uint32_t>(readoutNs(sensor) / lsc::kNsPerUs);
    return lsc::selectTimes(static_cast<CustShadingType>(type), input, shutterUs);  // any number may stand here
}

bool Diagnosis::computes(std::int32_t sensor, const lsc::ExposureTimes& times) {
    if (mPlatformFailing) return false;
    // Type 0 with the exposure's times computes the same and is never dumped.
    CalcOISValueInput input;
    input.sof_timestamp = times.sofNs;
    input.exposure_time = times.exposureNs;
    std::vector<double> x;
    std::vector<double> y;
    mLibrary.CalcOISValue(CustShadingType::kFrame, input, &x, &y, 0, sensor);
    return !x.empty() && !y.empty();
}

std::optional<SpanUsed> Diagnosis::spanUsed(std::int32_t sensor, const lsc::ExposureTimes& times) {
    const Search search = searchFor(times, samplesAround(sensor, times.sofNs));
    const lsc::SpanSearch& span = search.span;
    if (!span.startFound) return std::nullopt;
    const std::int64_t distance = lsc::distanceUs(times.startUs, search.active[span.start].timeUs);
    return SpanUsed{narrow<std::uint64_t>(distance), search.stampNs(span.start), search.stampNs(span.end), span.size()};
}

std::optional<Reason> Diagnosis::whyNoMonitor(std::int32_t sensor) {
    if (mLibrary.IsEnabled(sensor)) return std::nullopt;
    return detailedReason(Kind::kNoMonitor,
                          mAccount.isRegistered(sensor) ? "registered, not started" : "none is registered");
}

Reason Diagnosis::whyNothing(std::int32_t sensor, const lsc::ExposureTimes& times) {
    if (mPlatformFailing) return plainReason(Kind::kPlatformFailing);
    if (const auto noMonitor = whyNoMonitor(sensor)) return *noMonitor;
    if (times.sofNs == 0) return plainReason(Kind::kNoStartOfFrame);
    lsc::Samples samples = samplesAround(sensor, times.sofNs);
    return samples.empty() ? whyNoSamples(sensor, times)
                           : whyNoMatch(searchFor(times, std::move(samples)), readoutNs(sensor));
}

lsc::Samples Diagnosis::samplesAround(std::int32_t sensor, std::uint64_t timestampNs) {
    lsc::Samples samples;
    mLibrary.QuerySensorData(samples, sensor, 0, timestampNs);
    return samples;
}

Diagnosis::Search Diagnosis::searchFor(const lsc::ExposureTimes& times, lsc::Samples samples) const {
    Search search{std::move(samples), times, {}, {}};
    search.active = lsc::activate(search.samples, lsc::sampleTimeOffset(times));
    search.span = lsc::findSpan(search.active, times);
    return search;
}

Reason Diagnosis::whyNoSamples(std::int32_t sensor, const lsc::ExposureTimes& times) {
    // Every sample lies at or after 1 ns, so nothing at all means that too few are buffered.
    if (samplesAround(sensor, 1).empty()) {
        const std::size_t buffered = mAccount.buffered(sensor);
        return detailedReason(Kind::kTooFewSamples, std::to_string(buffered), buffered);
    }
    // Unsigned, as the library searches.
    const auto newest = static_cast<std::uint64_t>(mAccount.newestNs(sensor).value_or(0));
    const std::uint64_t late = (times.sofNs - newest) / lsc::kNsPerUs;
    return detailedReason(Kind::kNoLaterSample, fmt::format("the newest is {} us before it", late), late);
}

Reason Diagnosis::whyNoMatch(const Search& search, std::uint64_t shutterNs) const {
    if (!search.span.startFound) {
        if (const auto nearest = nearestUs(search.active, search.times.startUs)) return tooFarReason(*nearest);
    }
    const std::int32_t mode = mCalculationMode.value_or(lsc::kMean);
    if (!lsc::isReduction(mode)) {
        return {Kind::kCalculationMode, fmt::format("calculation mode {} computes nothing", mode)};
    }
    const double readoutUs = static_cast<double>(shutterNs) / lsc::kNsPerUs;  // a short one
    return detailedReason(Kind::kOneSample, fmt::format("rolling shutter {:.10g} us", readoutUs),
                          search.times.shutterUs);
}

}  // namespace replay
