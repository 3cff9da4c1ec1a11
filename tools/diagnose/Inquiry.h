// Finds out what came of the exposures that one call asked for: each inquiry is made before the call, with what the
// outputs hold then, and answers after it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "customer/aaa/aaa/lsc/OisMetadata.h"
#include "platform/Metadata.h"
#include "tools/diagnose/Diagnosis.h"
#include "tools/diagnose/Outcome.h"

namespace replay {

// For one call of fillLscOISCompInfo.
class FrameInquiry {
public:
    // `metadata` is the call's, or null; it must outlive the inquiry.
    FrameInquiry(std::int32_t sensor, const NSCam::IMetadata* metadata);

    // One outcome for each exposure of the frame.
    std::vector<ExposureOutcome> outcomes(Diagnosis& diagnosis) const;

private:
    std::optional<Reason> whyNotTried(Diagnosis& diagnosis, CalcOISValueInput& input) const;
    ExposureOutcome outcomeOf(const lsc::FrameExposure& exposure, const CalcOISValueInput& input, bool tried,
                              Diagnosis& diagnosis) const;

    const std::int32_t mSensor;
    const NSCam::IMetadata* const mMetadata;
    const NSCam::IMetadata mBefore;
};

// For one direct call of CalcOISValue.
class CalculationInquiry {
public:
    // `x` and `y` are the vectors that the call may change; they must outlive the inquiry.
    CalculationInquiry(std::int32_t sensor, std::uint32_t type, const CalcOISValueInput& input,
                       const std::vector<double>& x, const std::vector<double>& y)
        : mSensor(sensor), mType(type), mInput(input), mX(x), mY(y), mXBefore(x), mYBefore(y) {}

    // The outcome of the one exposure.
    std::vector<ExposureOutcome> outcomes(Diagnosis& diagnosis) const;

private:
    Reason whyNothing(Diagnosis& diagnosis, const std::optional<lsc::ExposureTimes>& times) const;

    const std::int32_t mSensor;
    const std::uint32_t mType;
    const CalcOISValueInput mInput;
    const std::vector<double>& mX;
    const std::vector<double>& mY;
    const std::vector<double> mXBefore;
    const std::vector<double> mYBefore;
};

}  // namespace replay
