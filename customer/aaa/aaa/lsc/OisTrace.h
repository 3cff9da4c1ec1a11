// Debug messages that narrate the steps of one calculation; the caller asks for them at the trace level alone.
#pragma once

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace lsc {

// Every sample of the query.
void traceSamples(const Samples& samples);

// Every entry that the search looked at, with its distance (us) from the moment it was held against.
void traceSearch(const ActiveSamples& samples, const ExposureTimes& times, const SpanSearch& span);

// Every entry of the span that is reduced.
void traceReduction(const ActiveSamples& samples, const ExposureTimes& times, const SpanSearch& span);

}  // namespace lsc
