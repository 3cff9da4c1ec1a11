// Why an exposure that the library was asked for got no position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace replay {

struct Reason {
    enum class Kind {
        kNoMetadata,
        kNoCalibration,
        kAlreadyWritten,
        kTimingMissing,
        kNoMonitor,
        kUnknownType,
        kNoStartOfFrame,
        kTooFewSamples,
        kNoLaterSample,
        kNoNearSample,
        kOneSample,
        kCalculationMode,
        kPlatformFailing,
    };

    Kind kind;
    std::string text;  // for the exposure's row: the kind's text, or one that also gives the number that decided
    std::uint64_t number = 0;  // that number: samples buffered, or us; 0 for a kind without one
};

// Kinds as indexes from 0, for counting.
constexpr std::size_t indexOf(Reason::Kind kind) {
    return static_cast<std::size_t>(kind);  // the kinds count from 0
}
inline constexpr std::size_t kReasonKinds = indexOf(Reason::Kind::kPlatformFailing) + 1;  // it is the last one
constexpr Reason::Kind reasonKind(std::size_t index) {
    return static_cast<Reason::Kind>(index);  // below kReasonKinds
}

// The text of a kind, without the numbers of an exposure, so that exposures can be counted under it.
std::string reasonText(Reason::Kind kind);

// A reason with nothing to add to its kind.
inline Reason plainReason(Reason::Kind kind) {
    return {kind, reasonText(kind)};
}
// A reason whose row says more: the kind's text, a colon, `detail`.
inline Reason detailedReason(Reason::Kind kind, const std::string& detail, std::uint64_t number = 0) {
    return {kind, reasonText(kind) + ": " + detail, number};
}

}  // namespace replay
