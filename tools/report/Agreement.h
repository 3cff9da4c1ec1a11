// How far a device's result for an exposure and the workstation's agree: pure functions.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/diagnose/Outcome.h"
#include "tools/session/Expectation.h"

namespace replay {

enum class Agreement {
    kSame,        // to six decimals, or no position on both sides
    kNear,        // no farther apart than the tolerance, in x and in y
    kDifferent,   // farther
    kOnlyDevice,  // only the device has a position
    kOnlyHere,
};

// The position that the call wrote, as a device prints it.
std::optional<Expectation::Printed> printedPosition(const ExposureOutcome& outcome);

Agreement agreementOf(const std::optional<Expectation::Printed>& here,
                      const std::optional<Expectation::Printed>& device, double tolerance);

// What does not meet the device, with the words for it.
inline constexpr std::array<std::pair<Agreement, std::string_view>, 3> kUnmet{{
    {Agreement::kDifferent, "different positions"},
    {Agreement::kOnlyDevice, "a position on the device only"},
    {Agreement::kOnlyHere, "a position here only"},
}};

// Whether the workstation does what the device did.
inline bool isMet(Agreement agreement) {
    return agreement == Agreement::kSame || agreement == Agreement::kNear;
}

}  // namespace replay
