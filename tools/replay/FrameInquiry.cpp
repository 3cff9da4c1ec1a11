#include "tools/replay/FrameInquiry.h"

#include <algorithm>
#include <bit>
#include <span>
#include <string>
#include <variant>

namespace replay {
namespace {

using Kind = Reason::Kind;
using Entries = std::map<std::uint32_t, host::MetadataValues>;
using Doubles = std::vector<double>;

constexpr std::uint32_t kExposureModeTag = 0xC00A0002;
constexpr std::uint32_t kMultiExposureFlags = 0x618;
constexpr std::uint32_t kStartOfFrameTag = 0xC0010017;
constexpr std::uint32_t kExposureBlockTag = 0xC0030000;
constexpr std::int32_t kSensors = 14;  // that the library keeps calibrations of

// An exposure's type and the tags of its outputs.
struct Outputs {
    std::uint32_t type;
    std::uint32_t xTag;
    std::uint32_t yTag;
};
constexpr Outputs kSingleExposure[] = {{1, 0xC0030033, 0xC0030034}};
constexpr Outputs kMultiExposure[] = {{5, 0xC0030035, 0xC0030036}, {6, 0xC0030037, 0xC0030038}};

template <typename T>
std::span<const T> valuesOf(const Entries& entries, std::uint32_t tag) {
    const auto entry = entries.find(tag);
    if (entry == entries.end()) return {};
    const auto* const values = std::get_if<std::vector<T>>(&entry->second);
    return values != nullptr ? std::span<const T>(*values) : std::span<const T>();
}

std::span<const Outputs> exposuresOf(const Entries& entries) {
    const auto flags = valuesOf<std::int32_t>(entries, kExposureModeTag);
    // A bit field in a signed entry.
    const bool multi = !flags.empty() && (static_cast<std::uint32_t>(flags.front()) & kMultiExposureFlags) != 0;
    return multi ? std::span<const Outputs>(kMultiExposure) : std::span<const Outputs>(kSingleExposure);
}

// Equal bit for bit: a NaN equals itself, and -0.0 is not 0.0.
bool same(std::span<const double> a, std::span<const double> b) {
    const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
    return std::ranges::equal(a, b, {}, bits, bits);
}

std::optional<Position> positionOf(std::span<const double> x, std::span<const double> y) {
    if (x.empty() || y.empty()) return std::nullopt;
    return Position{x.front(), y.front()};
}

std::optional<Position> positionIn(const Entries& entries, const Outputs& outputs) {
    return positionOf(valuesOf<double>(entries, outputs.xTag), valuesOf<double>(entries, outputs.yTag));
}

bool sameOutputs(const Entries& a, const Entries& b, const Outputs& outputs) {
    return same(valuesOf<double>(a, outputs.xTag), valuesOf<double>(b, outputs.xTag)) &&
           same(valuesOf<double>(a, outputs.yTag), valuesOf<double>(b, outputs.yTag));
}

Reason noCalibration(std::int32_t sensor) {
    if (sensor >= 0 && sensor < kSensors) return plainReason(Kind::kNoCalibration);
    return detailedReason(Kind::kNoCalibration, "sensor ids go from 0 to " + std::to_string(kSensors - 1));
}

Reason timingMissing(const Entries& entries) {
    const bool start = !valuesOf<std::int64_t>(entries, kStartOfFrameTag).empty();
    const auto block = entries.find(kExposureBlockTag);
    const bool exposed = block != entries.end() && std::holds_alternative<NSCam::IMetadata::Memory>(block->second);
    if (start && exposed) return plainReason(Kind::kTimingMissing);
    if (exposed) return detailedReason(Kind::kTimingMissing, "start of frame");
    return detailedReason(Kind::kTimingMissing, start ? "exposure block" : "start of frame and exposure block");
}

// What there is to say of an exposure whose position came from this call.
void describeSpan(Questions& questions, ExposureOutcome& outcome) {
    if (!outcome.reason && outcome.exposure) outcome.span = questions.spanUsed(outcome.sensor, *outcome.exposure);
}

// Why the library did not come to calculate anything of the frame.
std::optional<Reason> whyNotTried(Questions& questions, std::int32_t sensor, const Entries& before, bool timed) {
    if (!questions.isCalibrated(sensor)) return noCalibration(sensor);
    const auto written = [&before](const Outputs& outputs) { return positionIn(before, outputs).has_value(); };
    if (std::ranges::all_of(exposuresOf(before), written)) return plainReason(Kind::kAlreadyWritten);
    if (!timed) return timingMissing(before);
    return std::nullopt;
}

}  // namespace

FrameInquiry::FrameInquiry(std::int32_t sensor, NSCam::IMetadata* metadata)
    : mSensor(sensor),
      mMetadata(metadata),
      mBefore(metadata != nullptr ? host::metadataEntries(*metadata) : Entries()) {}

std::vector<ExposureOutcome> FrameInquiry::outcomes(Questions& questions) const {
    if (mMetadata == nullptr) return {{mSensor, {}, {}, {}, plainReason(Kind::kNoMetadata), 0, {}}};
    CalcOISValueInput input;
    const bool timed = questions.readTiming(*mMetadata, input);
    const std::optional<Reason> notTried = whyNotTried(questions, mSensor, mBefore, timed);
    const Entries after = host::metadataEntries(*mMetadata);
    std::vector<ExposureOutcome> outcomes;
    for (const Outputs& outputs : exposuresOf(mBefore)) {
        ExposureOutcome outcome{
            mSensor, outputs.type, exposureOf(outputs.type, input), positionIn(after, outputs), notTried, 0, {}};
        // Values that are the same afterwards may have been written anew.
        const bool unchanged = !outcome.position || sameOutputs(mBefore, after, outputs);
        if (!notTried && unchanged && !questions.computes(mSensor, *outcome.exposure)) {
            outcome.reason = questions.whyNothing(mSensor, *outcome.exposure);
        }
        if (outcome.reason && outcome.reason->kind != Kind::kAlreadyWritten) outcome.position.reset();
        outcome.readoutNs = questions.readoutNs(mSensor);
        describeSpan(questions, outcome);
        outcomes.push_back(std::move(outcome));
    }
    return outcomes;
}

ExposureOutcome CalculationInquiry::outcome(Questions& questions, const Doubles& x, const Doubles& y) const {
    ExposureOutcome outcome{mSensor, mType, exposureOf(mType, mInput), positionOf(x, y), {}, 0, {}};
    outcome.readoutNs = questions.readoutNs(mSensor);
    // Values that are the same afterwards may have been computed anew.
    const bool changed = !same(mX, x) || !same(mY, y);
    if (changed || (outcome.exposure && questions.computes(mSensor, *outcome.exposure))) {
        describeSpan(questions, outcome);
        return outcome;
    }
    outcome.position.reset();
    if (outcome.exposure) {
        outcome.reason = questions.whyNothing(mSensor, *outcome.exposure);
    } else if (!questions.monitorRuns(mSensor)) {
        outcome.reason = questions.whyNothing(mSensor, {});
    } else {
        outcome.reason = plainReason(Kind::kUnknownType);
    }
    return outcome;
}

}  // namespace replay
