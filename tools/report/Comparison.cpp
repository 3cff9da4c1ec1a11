#include "tools/report/Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "tools/session/Expectation.h"

namespace replay {
namespace {

using Printed = Expectation::Printed;

constexpr std::uint64_t kMaxLines = 40;  // of a group

bool isNear(const std::string& a, const std::string& b, double tolerance) {
    return a == b || std::abs(std::strtod(a.c_str(), nullptr) - std::strtod(b.c_str(), nullptr)) <= tolerance;
}

bool isNear(const Printed& a, const Printed& b, double tolerance) {
    return isNear(a.x, b.x, tolerance) && isNear(a.y, b.y, tolerance);
}

std::string words(const std::optional<Printed>& position) {
    return position ? fmt::format("x {} y {}", position->x, position->y) : "no position";
}

std::optional<Printed> positionOf(const std::vector<ExposureOutcome>& outcomes, const Expectation& expected) {
    const auto found = std::ranges::find_if(outcomes, [&](const ExposureOutcome& outcome) {
        return outcome.sensor == expected.sensor && outcome.type == expected.type;
    });
    // A position with a reason is an earlier call's.
    if (found == outcomes.end() || !found->position || found->reason) return std::nullopt;
    return Printed{fmt::format("{:f}", found->position->x), fmt::format("{:f}", found->position->y)};
}

std::string lineOf(const Expectation& expectation, const std::optional<Printed>& here) {
    return (expectation.frame ? fmt::format("frame {}: ", *expectation.frame) : "") +
           fmt::format("the device gave {}, here {} (sensor {}, type {})", words(expectation.position), words(here),
                       expectation.sensor, expectation.type);
}

}  // namespace

void Comparison::expected(const Expectation& expectation) {
    const std::optional<Printed> here = positionOf(mOutcomes, expectation);
    const auto& device = expectation.position;
    judge(expectation, here);
    if (!here && !device) {
        ++mSame;
        return;
    }
    if (here && device) {
        const bool same = here->x == device->x && here->y == device->y;
        const bool near = isNear(*here, *device, kRounding);
        ++(same ? mSame : near ? mRounded : mDifferent);
        if (same || near) return;
    } else {
        ++(device ? mOnlyDevice : mOnlyHere);
    }
    mOut << "        ^ " << lineOf(expectation, here) << '\n';
}

void Comparison::judge(const Expectation& expectation, const std::optional<Printed>& here) {
    Group& group = mGroups[{expectation.sensor, expectation.type}];
    ++group.compared;
    const auto& device = expectation.position;
    if (here && device ? isNear(*here, *device, mTolerance) : !here && !device) return;
    if (group.unmet++ < kMaxLines) group.lines += lineOf(expectation, here) + '\n';
}

bool Comparison::isMet() const {
    return !mGroups.empty() && std::ranges::none_of(mGroups, [](const auto& its) { return its.second.unmet > 0; });
}

std::vector<std::pair<std::string_view, std::uint64_t>> Comparison::counts() const {
    const std::uint64_t all = mSame + mRounded + mDifferent + mOnlyDevice + mOnlyHere;
    if (all == 0) return {};
    return {{"exposures compared with the device", all},       {"  the same to six decimals, or none on both", mSame},
            {"  the same but for the last decimal", mRounded}, {"  another position", mDifferent},
            {"  a position on the device only", mOnlyDevice},  {"  a position here only", mOnlyHere}};
}

}  // namespace replay
