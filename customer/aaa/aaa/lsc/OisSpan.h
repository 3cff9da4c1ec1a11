// Computes the one lens position of an exposure from the hall samples around the frame. Pure functions of their inputs;
// they allocate nothing. Times are microseconds unless a name says otherwise.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "customer/aaa/aaa/lsc/SampleBatch.h"

namespace lsc {

inline constexpr std::uint32_t kNsPerUs = 1000;

// A sample at this distance from a moment, or farther, does not match it.
inline constexpr std::int64_t kMatchWindowUs = 1000;

// When one exposure of a frame took place.
struct ExposureTimes {
    std::uint64_t sofNs = 0;       // start of frame, as the platform gave it
    std::uint64_t exposureNs = 0;  // exposure time, as the platform gave it
    std::uint64_t exposureUs = 0;
    std::uint64_t startUs = 0;  // start of the exposure; wraps at 64 bits when the exposure exceeds the start of frame
    std::uint32_t shutterUs = 0;  // rolling-shutter time, from the first row to the last
};
// The times that `type` selects from the input, or nothing for a type without times.
std::optional<ExposureTimes> selectTimes(CustShadingType type, const CalcOISValueInput& input, std::uint32_t shutterUs);

// Offset between a sample's time stamp and the time it counts for; always negative: a sample counts for a later time.
std::int64_t sampleTimeOffset(const ExposureTimes& times);

// A sample's own time stamp, rounded toward zero.
std::int64_t sampleTimeUs(const NSCam::Utils::SensorData& sample);

// The samples to search, at most one for each microsecond, with the times that they count for.
struct ActiveSample {
    float x;
    float y;
    std::int64_t timeUs;
};
struct ActiveSamples {
    static constexpr std::int32_t kCapacity = 100;
    std::array<ActiveSample, kCapacity> entries;  // the first `count` have values
    std::int32_t count = 0;

    // Indexes are signed as in the messages, and never negative.
    const ActiveSample& operator[](std::int32_t index) const { return entries[static_cast<std::size_t>(index)]; }
};
ActiveSamples activate(const Samples& samples, std::int64_t timeOffsetUs);

// Distance of two times in 64-bit arithmetic that wraps. They are less than 2^63 us apart, as times made from ns are.
std::int64_t distanceUs(std::uint64_t a, std::int64_t b);

// The entries from the start of the exposure to the end of the readout, both inclusive, and how far the search looked.
struct SpanSearch {
    std::int32_t start = 0;
    std::int32_t end = 0;
    bool startFound = false;        // an entry matched the start; the last one looked at
    std::int32_t startScanned = 0;  // entries [0, startScanned) were looked at for the start; those at time 0 skipped
    std::int32_t endScanned = 0;    // entries [start, endScanned) were looked at for the end

    std::int32_t size() const { return end - start + 1; }
};
SpanSearch findSpan(const ActiveSamples& samples, const ExposureTimes& times);

// The time at which the readout ends for a span that begins at entry `start`.
std::uint64_t readoutEndUs(const ActiveSamples& samples, std::int32_t start, const ExposureTimes& times);

// Reduces the span to one position. Modes: 0 mean, 1 largest x and largest y, 2 middle entry, 3 last entry; any other
// mode gives nothing. Sums and quotients are in single precision.
enum OisReduction : std::int32_t { kMean = 0, kLargest = 1, kMiddle = 2, kLast = 3 };
constexpr bool isReduction(std::int32_t mode) {
    return mode >= kMean && mode <= kLast;
}
struct LensPosition {
    float x;
    float y;
};
std::optional<LensPosition> reduceSpan(const ActiveSamples& samples, const SpanSearch& span, std::int32_t mode);

}  // namespace lsc
