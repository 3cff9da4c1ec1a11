#include "tools/import/Recalculation.h"

#include <cmath>

#include "tools/session/Expectation.h"

namespace replay::import {
namespace {

bool isNear(double printed, float value) {
    if (std::isnan(printed) || std::isinf(printed)) {
        return std::isnan(printed) ? std::isnan(value) : static_cast<double>(value) == printed;
    }
    return std::abs(printed - static_cast<double>(value)) < kRounding;
}

std::size_t stepsOf(const lsc::ActiveSamples& active, const lsc::SpanSearch& span, std::int32_t mode) {
    std::size_t steps = 2;  // the number of samples, and the span
    for (std::int32_t i = 0; i < span.startScanned; ++i)
        steps += active[i].timeUs != 0 ? 1U : 0U;
    if (span.startFound) steps += 1 + static_cast<std::size_t>(span.endScanned - span.start);  // it scans from there
    const bool traced = mode == lsc::kMean || mode == lsc::kLargest;
    if (traced && span.size() > 1) steps += static_cast<std::size_t>(span.size());
    return steps;
}

}  // namespace

Recalculation recalculate(const Calculation& calculation, std::int32_t mode, const lsc::Samples& window) {
    lsc::ExposureTimes times;
    times.exposureUs = calculation.exposureUs;
    times.startUs = calculation.startUs;
    times.shutterUs = calculation.shutterUs;
    const lsc::ActiveSamples active = lsc::activate(window, lsc::sampleTimeOffset(times));
    const lsc::SpanSearch span = lsc::findSpan(active, times);
    Recalculation result;
    result.steps = stepsOf(active, span, mode);
    if (span.size() <= 1) return result;
    result.span = static_cast<std::size_t>(span.size());
    result.position = lsc::reduceSpan(active, span, mode);
    return result;
}

lsc::Samples windowOf(const std::vector<Listed>& listing) {
    lsc::Samples window(listing.size());
    for (std::size_t i = 0; i < listing.size(); ++i) {
        window[i].timestamp = listing[i].timeUs * std::int64_t{lsc::kNsPerUs};
        window[i].oisX = listing[i].x;
        window[i].oisY = listing[i].y;
    }
    return window;
}

bool isPrinted(const Exposure& exposure, const lsc::LensPosition& position) {
    return isNear(exposure.x, position.x) && isNear(exposure.y, position.y);
}

}  // namespace replay::import
