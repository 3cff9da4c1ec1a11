// Finds out what came of the exposures that one call asked for: each inquiry is made before the call, with what the
// outputs hold then, and answers after it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/host/Host.h"
#include "tools/replay/Questions.h"
#include "tools/replay/Reason.h"

namespace replay {

// Where the lens stood.
struct Position {
    double x = 0.0;
    double y = 0.0;
};

// What came of one exposure.
struct ExposureOutcome {
    std::int32_t sensor = 0;
    std::optional<std::uint32_t> type;  // nothing for a frame without metadata
    std::optional<Exposure> exposure;   // nothing for a type that computes nothing, or a frame without metadata
    std::optional<Position> position;   // the position written, also by an earlier call
    std::optional<Reason> reason;       // why this call wrote none
    std::uint64_t readoutNs = 0;        // time from the first row read to the last; 0 without one
    std::optional<SpanUsed> span;       // the samples that a position of this call came from
};

// For one call of fillLscOISCompInfo.
class FrameInquiry {
public:
    // `metadata` is the call's, or null; it must outlive the inquiry.
    FrameInquiry(std::int32_t sensor, NSCam::IMetadata* metadata);

    // One outcome for each exposure of the frame.
    std::vector<ExposureOutcome> outcomes(Questions& questions) const;

private:
    using Entries = std::map<std::uint32_t, host::MetadataValues>;

    const std::int32_t mSensor;
    NSCam::IMetadata* const mMetadata;
    const Entries mBefore;
};

// For one direct call of CalcOISValue.
class CalculationInquiry {
public:
    CalculationInquiry(std::int32_t sensor, std::uint32_t type, const CalcOISValueInput& input,
                       const std::vector<double>& x, const std::vector<double>& y)
        : mSensor(sensor), mType(type), mInput(input), mX(x), mY(y) {}

    // `x` and `y` are the vectors after the call.
    ExposureOutcome outcome(Questions& questions, const std::vector<double>& x, const std::vector<double>& y) const;

private:
    const std::int32_t mSensor;
    const std::uint32_t mType;
    const CalcOISValueInput mInput;
    const std::vector<double> mX;
    const std::vector<double> mY;
};

}  // namespace replay
