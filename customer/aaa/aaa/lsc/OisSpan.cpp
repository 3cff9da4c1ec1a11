#include "customer/aaa/aaa/lsc/OisSpan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "customer/aaa/aaa/lsc/WrappingTime.h"

namespace lsc {
namespace {

// How much later than its time stamp a sample counts: a share of the time a row is exposed, and a constant.
constexpr float kExposureShare = -0.5432F;
constexpr std::int64_t kSampleDelayUs = 166;

struct ScanResult {
    std::int32_t scanned;  // one past the last entry looked at
    bool found;            // that entry matched
};

// Looks at entries from `first` on, the table's last one excepted, for one within the match window of `time`.
template <typename Skip>
ScanResult scan(const ActiveSamples& samples, std::int32_t first, std::uint64_t time, Skip skip) {
    for (std::int32_t i = first; i < samples.count - 1; ++i) {
        if (!skip(samples[i]) && distanceUs(time, samples[i].timeUs) < kMatchWindowUs) return {i + 1, true};
    }
    return {std::max(first, samples.count - 1), false};
}

// Of the entry at `index` and its successor the one nearer to `time`; the earlier one when both are equally near.
std::int32_t nearer(const ActiveSamples& samples, std::int32_t index, std::uint64_t time) {
    return distanceUs(time, samples[index].timeUs) > distanceUs(time, samples[index + 1].timeUs) ? index + 1 : index;
}

// The NaN of an invalid sum carries a sign on some processors and none on others; messages must not differ by it.
float quotient(float sum, float count) {
    const float value = sum / count;
    return std::isnan(value) ? std::numeric_limits<float>::quiet_NaN() : value;
}

LensPosition mean(const ActiveSamples& samples, const SpanSearch& span) {
    float sumX = 0;
    float sumY = 0;
    for (std::int32_t i = span.start; i <= span.end; ++i) {
        sumX += samples[i].x;
        sumY += samples[i].y;
    }
    const auto count = static_cast<float>(span.size());
    return {quotient(sumX, count), quotient(sumY, count)};
}

LensPosition largest(const ActiveSamples& samples, const SpanSearch& span) {
    LensPosition position = {samples[span.start].x, samples[span.start].y};
    for (std::int32_t i = span.start; i <= span.end; ++i) {
        // Negated, so that a value that compares with nothing is replaced, and replaces.
        if (!(position.x > samples[i].x)) position.x = samples[i].x;
        if (!(position.y > samples[i].y)) position.y = samples[i].y;
    }
    return position;
}

LensPosition at(const ActiveSamples& samples, std::int32_t index) {
    return {samples[index].x, samples[index].y};
}

}  // namespace

std::optional<ExposureTimes> selectTimes(CustShadingType type, const CalcOISValueInput& input,
                                         std::uint32_t shutterUs) {
    const auto times = [shutterUs](std::uint64_t sofNs, std::uint64_t exposureNs) {
        const std::uint64_t exposureUs = exposureNs / kNsPerUs;
        return ExposureTimes{sofNs, exposureNs, exposureUs, wrappingDifference(sofNs / kNsPerUs, exposureUs),
                             shutterUs};
    };
    switch (type) {
        case CustShadingType::kFrame:
        case CustShadingType::kSingleExposure:
            return times(input.sof_timestamp, input.exposure_time);
        case CustShadingType::kMultiExposureNe:
            return times(input.sof_timestamp_ne, input.exposure_time_ne);
        case CustShadingType::kSeExposureOnly:
        case CustShadingType::kMultiExposureSe:
            return times(input.sof_timestamp_se, input.exposure_time_se);
        default:
            return std::nullopt;
    }
}

std::int64_t sampleTimeOffset(const ExposureTimes& times) {
    // In single precision; at most 2^32 / 1000, so the conversion is exact.
    const auto exposedUs = static_cast<float>(std::min<std::uint64_t>(times.exposureUs, times.shutterUs));
    return static_cast<std::int64_t>(exposedUs * kExposureShare) - kSampleDelayUs;
}

std::int64_t sampleTimeUs(const NSCam::Utils::SensorData& sample) {
    // Signed, or the sample's time would be taken for unsigned.
    return sample.timestamp / static_cast<std::int64_t>(kNsPerUs);
}

ActiveSamples activate(const Samples& samples, std::int64_t timeOffsetUs) {
    ActiveSamples active;
    ActiveSample* next = active.entries.data();
    const ActiveSample* const end = next + ActiveSamples::kCapacity;
    std::int64_t previous = 0;
    for (const NSCam::Utils::SensorData& sample : samples) {
        const std::int64_t time = sampleTimeUs(sample);
        if (time == previous || next == end) continue;
        *next++ = {sample.oisX, sample.oisY, time - timeOffsetUs};
        previous = time;
    }
    active.count = static_cast<std::int32_t>(next - active.entries.data());  // at most the capacity
    return active;
}

std::int64_t distanceUs(std::uint64_t a, std::int64_t b) {
    // Unsigned, because a signed subtraction must not wrap.
    const std::uint64_t difference = wrappingDifference(a, static_cast<std::uint64_t>(b));
    return static_cast<std::int64_t>(std::min(difference, wrappingDifference(0, difference)));
}

std::uint64_t readoutEndUs(const ActiveSamples& samples, std::int32_t start, const ExposureTimes& times) {
    return wrappingSum(static_cast<std::uint64_t>(samples[start].timeUs), times.shutterUs);
}

SpanSearch findSpan(const ActiveSamples& samples, const ExposureTimes& times) {
    SpanSearch span;
    const auto startScan =
        scan(samples, 0, times.startUs, [](const ActiveSample& sample) { return sample.timeUs == 0; });
    span.startScanned = startScan.scanned;
    span.startFound = startScan.found;
    if (!span.startFound) return span;

    const std::int32_t last = samples.count - 1;
    span.start = nearer(samples, span.startScanned - 1, times.startUs);
    const std::uint64_t readoutEnd = readoutEndUs(samples, span.start, times);
    const auto endScan = scan(samples, span.start, readoutEnd, [](const ActiveSample&) { return false; });
    span.endScanned = endScan.scanned;
    span.end = endScan.found ? nearer(samples, span.endScanned - 1, readoutEnd) : last;
    // A span that would end with the very first entry takes the whole table instead.
    if (span.end == 0) span.end = last;
    return span;
}

std::optional<LensPosition> reduceSpan(const ActiveSamples& samples, const SpanSearch& span, std::int32_t mode) {
    switch (mode) {
        case kMean:
            return mean(samples, span);
        case kLargest:
            return largest(samples, span);
        case kMiddle:
            return at(samples, (span.start + span.end + 1) / 2);
        case kLast:
            return at(samples, span.end);
        default:
            return std::nullopt;
    }
}

}  // namespace lsc
