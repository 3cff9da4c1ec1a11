#include "tools/diagnose/Inquiry.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

#include <fmt/format.h>

namespace replay {
namespace {

using Kind = Reason::Kind;
using NSCam::IMetadata;

bool holdsStartOfFrame(const IMetadata::BurstEntry& entry) {
    std::int64_t start = 0;
    return entry.readEntry(lsc::SOF_TIMESTAMP_TAG, start, 0) == 0;
}

bool holdsExposureBlock(const IMetadata::BurstEntry& entry) {
    IMetadata::Memory block;
    return entry.readEntry(lsc::EXPOSURE_INFO_BLOCK_TAG, block, 0) == 0;
}

std::vector<double> doublesIn(const IMetadata& metadata, std::uint32_t tag) {
    std::vector<double> values;
    metadata.burstRead([&](const IMetadata::BurstEntry& entry) { return entry.readEntries(tag, values); });
    return values;
}

// Equal bit for bit: a NaN equals itself, and -0.0 is not 0.0.
bool same(const std::vector<double>& a, const std::vector<double>& b) {
    const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
    return std::ranges::equal(a, b, {}, bits, bits);
}

std::optional<Position> positionOf(const std::vector<double>& x, const std::vector<double>& y) {
    if (x.empty() || y.empty()) return std::nullopt;
    return Position{x.front(), y.front()};
}

Reason noCalibration(std::int32_t sensor) {
    constexpr std::int32_t kSensors = TarvoShadingCustomUtil::kMaxSensorNum;
    if (sensor >= 0 && sensor < kSensors) return plainReason(Kind::kNoCalibration);
    return detailedReason(Kind::kNoCalibration, fmt::format("sensor ids go from 0 to {}", kSensors - 1));
}

Reason timingMissing(const IMetadata& metadata) {
    const bool start = metadata.burstRead(holdsStartOfFrame) != 0;
    const bool exposed = metadata.burstRead(holdsExposureBlock) != 0;
    if (start && exposed) return plainReason(Kind::kTimingMissing);
    if (exposed) return detailedReason(Kind::kTimingMissing, "start of frame");
    return detailedReason(Kind::kTimingMissing, start ? "exposure block" : "start of frame and exposure block");
}

}  // namespace

FrameInquiry::FrameInquiry(std::int32_t sensor, const IMetadata* metadata)
    : mSensor(sensor), mMetadata(metadata), mBefore(metadata != nullptr ? *metadata : IMetadata()) {}

std::vector<ExposureOutcome> FrameInquiry::outcomes(Diagnosis& diagnosis) const {
    if (mMetadata == nullptr) return {{mSensor, {}, {}, {}, plainReason(Kind::kNoMetadata), 0, {}}};
    CalcOISValueInput input;
    const std::optional<Reason> notTried = whyNotTried(diagnosis, input);
    std::vector<ExposureOutcome> outcomes;
    for (const lsc::FrameExposure& exposure : lsc::exposuresOf(lsc::readMultiExposure(mBefore))) {
        ExposureOutcome outcome = outcomeOf(exposure, input, !notTried, diagnosis);
        if (notTried) outcome.reason = notTried;
        if (outcome.reason && outcome.reason->kind != Kind::kAlreadyWritten) outcome.position.reset();
        if (!outcome.reason) outcome.span = diagnosis.spanUsed(mSensor, *outcome.times);
        outcomes.push_back(std::move(outcome));
    }
    return outcomes;
}

// Why the library did not come to calculate anything of the frame.
std::optional<Reason> FrameInquiry::whyNotTried(Diagnosis& diagnosis, CalcOISValueInput& input) const {
    const bool timed = lsc::readFrameTiming(mBefore, input) == 0;
    if (diagnosis.platformFailing()) return std::nullopt;
    if (!diagnosis.isCalibrated(mSensor)) return noCalibration(mSensor);
    if (lsc::hasOisValues(mBefore, lsc::exposuresOf(lsc::readMultiExposure(mBefore)))) {
        return plainReason(Kind::kAlreadyWritten);
    }
    return timed ? std::nullopt : std::optional(timingMissing(mBefore));
}

ExposureOutcome FrameInquiry::outcomeOf(const lsc::FrameExposure& exposure, const CalcOISValueInput& input, bool tried,
                                        Diagnosis& diagnosis) const {
    const auto type = static_cast<std::uint32_t>(exposure.type);  // shown as a number
    const std::vector<double> x = doublesIn(*mMetadata, exposure.xTag);
    const std::vector<double> y = doublesIn(*mMetadata, exposure.yTag);
    ExposureOutcome outcome{mSensor, type, diagnosis.timesOf(mSensor, type, input), positionOf(x, y), {}, 0, {}};
    outcome.readoutNs = diagnosis.readoutNs(mSensor);
    // Values that are the same afterwards may have been written anew.
    const bool unchanged =
        !outcome.position || (same(doublesIn(mBefore, exposure.xTag), x) && same(doublesIn(mBefore, exposure.yTag), y));
    if (tried && unchanged && !diagnosis.computes(mSensor, *outcome.times)) {  // a frame's exposures have times
        outcome.reason = diagnosis.whyNothing(mSensor, *outcome.times);
    }
    return outcome;
}

std::vector<ExposureOutcome> CalculationInquiry::outcomes(Diagnosis& diagnosis) const {
    ExposureOutcome outcome{mSensor, mType, diagnosis.timesOf(mSensor, mType, mInput), positionOf(mX, mY), {}, 0, {}};
    outcome.readoutNs = diagnosis.readoutNs(mSensor);
    // Values that are the same afterwards may have been computed anew.
    const bool changed = !same(mXBefore, mX) || !same(mYBefore, mY);
    if (changed || (outcome.times && diagnosis.computes(mSensor, *outcome.times))) {
        if (outcome.times) outcome.span = diagnosis.spanUsed(mSensor, *outcome.times);
    } else {
        outcome.position.reset();
        outcome.reason = whyNothing(diagnosis, outcome.times);
    }
    return {std::move(outcome)};
}

Reason CalculationInquiry::whyNothing(Diagnosis& diagnosis, const std::optional<lsc::ExposureTimes>& times) const {
    if (times) return diagnosis.whyNothing(mSensor, *times);
    return diagnosis.whyNoMonitor(mSensor).value_or(plainReason(Kind::kUnknownType));
}

}  // namespace replay
