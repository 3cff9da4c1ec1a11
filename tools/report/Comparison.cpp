#include "tools/report/Comparison.h"

#include <algorithm>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "tools/session/Expectation.h"

namespace replay {
namespace {

using Printed = Expectation::Printed;

constexpr std::uint64_t kMaxLines = 40;  // of a group

std::string words(const std::optional<Printed>& position) {
    return position ? fmt::format("x {} y {}", position->x, position->y) : "no position";
}

std::optional<Printed> positionOf(const std::vector<ExposureOutcome>& outcomes, const Expectation& expected) {
    const auto found = std::ranges::find_if(outcomes, [&](const ExposureOutcome& outcome) {
        return outcome.sensor == expected.sensor && outcome.type == expected.type;
    });
    return found == outcomes.end() ? std::nullopt : printedPosition(*found);
}

std::string lineOf(const Expectation& expectation, const std::optional<Printed>& here) {
    return (expectation.frame ? fmt::format("frame {}: ", *expectation.frame) : "") +
           fmt::format("the device gave {}, here {} (sensor {}, type {})", words(expectation.position), words(here),
                       expectation.sensor, expectation.type);
}

}  // namespace

void Comparison::expected(const Expectation& expectation) {
    const std::optional<Printed> here = positionOf(mOutcomes, expectation);
    const Agreement agreement = agreementOf(here, expectation.position, mTolerance);
    ++mCounts[agreement];
    Group& group = mGroups[{expectation.sensor, expectation.type}];
    ++group.compared;
    if (replay::isMet(agreement)) return;
    const std::string line = lineOf(expectation, here);
    mOut << "        ^ " << line << '\n';
    if (group.unmet++ < kMaxLines) group.lines += line + '\n';
}

bool Comparison::isMet() const {
    return !mGroups.empty() && std::ranges::none_of(mGroups, [](const auto& its) { return its.second.unmet > 0; });
}

std::vector<std::pair<std::string, std::uint64_t>> Comparison::counts() const {
    if (mCounts.empty()) return {};
    const auto count = [this](Agreement agreement) {
        const auto found = mCounts.find(agreement);
        return found == mCounts.end() ? 0 : found->second;
    };
    std::uint64_t all = 0;
    for (const auto& [agreement, its] : mCounts)
        all += its;
    const std::string near =
        mTolerance == kRounding ? "equal except in the last decimal" : fmt::format("equal to within {}", mTolerance);
    std::vector<std::pair<std::string, std::uint64_t>> counts{
        {"exposures compared with the device", all},
        {"  equal to six decimals, or none on both", count(Agreement::kSame)},
        {"  " + near, count(Agreement::kNear)}};
    for (const auto& [agreement, words] : kUnmet)
        counts.emplace_back("  " + std::string(words), count(agreement));
    return counts;
}

}  // namespace replay
