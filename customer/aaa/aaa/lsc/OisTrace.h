// Debug messages of one calculation: its input and output, and at the trace level, for which the caller asks, its
// steps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace lsc {

// The input of a calculation, for which `sampleCount` samples were found.
void logParameters(std::int32_t sensorId, std::uint32_t type, std::size_t sampleCount, const ExposureTimes& times,
                   std::int64_t timeOffsetUs);

// What the caller's vectors hold, from this calculation or from before it; nothing when one is empty.
void logOutputs(std::int32_t sensorId, std::uint32_t frame, std::int32_t mode, const std::vector<double>& x,
                const std::vector<double>& y);

// Every sample of the query.
void traceSamples(const Samples& samples);

// Every entry that the search looked at, with its distance (us) from the moment it was compared with.
void traceSearch(const ActiveSamples& samples, const ExposureTimes& times, const SpanSearch& span);

// Every entry of the span that is reduced.
void traceReduction(const ActiveSamples& samples, const ExposureTimes& times, const SpanSearch& span);

}  // namespace lsc
