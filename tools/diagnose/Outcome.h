// What became of the samples and the exposures of a session: plain data.
#pragma once

#include <cstdint>
#include <optional>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "tools/diagnose/Reason.h"

namespace replay {

// The samples that one UpdateSensorData call took over from the provider, and what the sensor's buffer made of them.
struct HandOver {
    std::int32_t sensor;
    std::uint32_t frame;
    const lsc::Samples& samples;  // in time order, before any division
    lsc::SampleQueue::Filing filing;
    std::uint64_t timestampNs = 0;  // the frame's, as the call gave it
};

// Where the lens stood.
struct Position {
    double x = 0.0;
    double y = 0.0;
};

// The samples that a position came from.
struct SpanUsed {
    std::uint64_t distanceUs = 0;  // from the exposure start to the first of them, the samples' delay counted in
    std::int64_t firstNs = 0;      // time stamps of the first and the last, as delivered
    std::int64_t lastNs = 0;
    std::int32_t samples = 0;
};

// What came of one exposure.
struct ExposureOutcome {
    std::int32_t sensor = 0;
    std::optional<std::uint32_t> type;        // nothing for a frame without metadata
    std::optional<lsc::ExposureTimes> times;  // nothing for a type that computes nothing, or a frame without metadata
    std::optional<Position> position;         // the position written, also by an earlier call
    std::optional<Reason> reason;             // why this call wrote none
    std::uint64_t readoutNs = 0;              // time from the first row read to the last; 0 without one
    std::optional<SpanUsed> span;             // the samples that a position of this call came from
    std::optional<std::uint32_t> frame = std::nullopt;  // its number, as the sensor's hand-overs tell
};

}  // namespace replay
