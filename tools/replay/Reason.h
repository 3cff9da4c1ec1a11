// Why an exposure that the library was asked for got no position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

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
    };
    static constexpr std::size_t kKinds = static_cast<std::size_t>(Kind::kCalculationMode) + 1;  // it is the last one

    Kind kind;
    std::string text;  // for the exposure's row: the kind's text, or one that also gives the number that decided
    std::uint64_t number = 0;  // that number: samples buffered, or us; 0 for a kind without one
};

// The text of a kind, without numbers: the same for every exposure, so that they can be counted under it.
std::string_view reasonText(Reason::Kind kind);

// A reason with nothing to add to its kind.
inline Reason plainReason(Reason::Kind kind) {
    return {kind, std::string(reasonText(kind))};
}
// A reason whose row says more: the kind's text, a colon, `detail`.
inline Reason detailedReason(Reason::Kind kind, const std::string& detail, std::uint64_t number = 0) {
    return {kind, std::string(reasonText(kind)) + ": " + detail, number};
}

}  // namespace replay
