#include "tools/report/Extent.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

#include "tools/session/Narrow.h"

namespace replay {

void TimeLimits::check() const {
    const bool finite = std::isfinite(fromMs.value_or(0)) && std::isfinite(toMs.value_or(0));
    if (!finite || (fromMs && toMs && !(*fromMs < *toMs)))
        throw std::invalid_argument("--from and --to must be finite, and --from less than --to");
}

void Extent::handedOver(const HandOver& handOver) {
    if (handOver.samples.empty()) return;
    const std::int64_t first = handOver.samples.front().timestamp;
    mFirstSample = std::min(mFirstSample.value_or(first), first);
    reach(handOver.samples.back().timestamp);
}

void Extent::exposuresAsked(const std::vector<ExposureOutcome>& outcomes) {
    for (const ExposureOutcome& outcome : outcomes) {
        const auto times = timesOf(outcome);
        if (!times) continue;
        mFirstFrame = std::min(mFirstFrame.value_or(times->read), times->read);
        reach(times->finished);
    }
}

void Extent::reach(std::int64_t ns) {
    mLast = std::max(mLast.value_or(ns), ns);
}

double Extent::msBetween(std::int64_t beginNs, std::int64_t endNs) {
    constexpr double kNsPerMs = 1e6;
    return (static_cast<double>(endNs) - static_cast<double>(beginNs)) / kNsPerMs;
}

void Extent::checkBegin(const TimeLimits& limits) const {
    if (!limits.fromMs || !mLast || *limits.fromMs <= ms(*mLast)) return;
    throw std::invalid_argument(fmt::format(
        "nothing from {:.10g} ms on: the session ends {:.3f} ms after its first sample", *limits.fromMs, ms(*mLast)));
}

std::optional<RowTimes> timesOf(const ExposureOutcome& outcome) {
    constexpr std::uint64_t kMax = INT64_MAX / 4;  // sums and differences of such times fit
    if (!outcome.times) return std::nullopt;
    const std::uint64_t start = outcome.times->sofNs;
    const std::uint64_t exposed = outcome.times->exposureNs;
    if (start == 0 || start > kMax || exposed > kMax || outcome.readoutNs > kMax) return std::nullopt;
    const auto read = narrow<std::int64_t>(start);
    return RowTimes{read - narrow<std::int64_t>(exposed), read, read + narrow<std::int64_t>(outcome.readoutNs)};
}

}  // namespace replay
