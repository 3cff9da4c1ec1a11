#include "tools/report/Table.h"

#include <cmath>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "tools/diagnose/Outcome.h"

namespace replay {
namespace {

// Frame, sensor, start of frame, exposure and type; then x and y, samples of the span and match distance.
constexpr std::string_view kColumns = " {:>6} {:>6} {:>20} {:>14} {:>5}";
constexpr std::string_view kPositionColumns = " {:>13} {:>13}";
constexpr std::string_view kSpanColumns = " {:>5} {:>10}";

// Microseconds with the rest as decimals.
std::string microseconds(std::uint64_t ns) {
    return fmt::format("{}.{:03}", ns / lsc::kNsPerUs, ns % lsc::kNsPerUs);
}

std::string coordinate(double value) {
    constexpr double kMaxFixed = 1e7;  // keeps the column's width
    return std::abs(value) < kMaxFixed ? fmt::format("{:.4f}", value) : fmt::format("{:.6g}", value);
}

std::string rowOf(const ExposureOutcome& outcome) {
    std::string row = fmt::format(kColumns, outcome.frame ? std::to_string(*outcome.frame) : "-", outcome.sensor,
                                  outcome.times ? std::to_string(outcome.times->sofNs) : "-",
                                  outcome.times ? microseconds(outcome.times->exposureNs) : "-",
                                  outcome.type ? std::to_string(*outcome.type) : "-");
    if (outcome.position) {
        row += fmt::format(kPositionColumns, coordinate(outcome.position->x), coordinate(outcome.position->y));
    }
    if (outcome.span) row += fmt::format(kSpanColumns, outcome.span->samples, outcome.span->distanceUs);
    if (outcome.reason) row += "  " + outcome.reason->text;
    return row;
}

}  // namespace

void Table::exposuresAsked(const std::vector<ExposureOutcome>& outcomes) {
    if (!std::exchange(mHasHeader, true)) {
        mOut << fmt::format(kColumns, "frame", "sensor", "start of frame (ns)", "exposure (us)", "type")
             << fmt::format(kPositionColumns, "x", "y") << fmt::format(kSpanColumns, "span", "match (us)") << '\n';
    }
    for (const ExposureOutcome& outcome : outcomes)
        mOut << rowOf(outcome) << '\n';
}

}  // namespace replay
