#include "tools/report/Strip.h"

#include <algorithm>
#include <numeric>
#include <span>

#include <fmt/format.h>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

constexpr std::size_t kColumns = 750;
constexpr double kLeastShare = 0.1;

template <typename Shares>
Shares sharesOf(Shares frames) {
    const double least = kLeastShare * std::accumulate(frames.begin(), frames.end(), 0.0);
    for (double& reason : std::span(frames).subspan(1))
        if (reason > 0) reason = std::max(reason, least);
    const double all = std::accumulate(frames.begin(), frames.end(), 0.0);
    for (double& share : frames)
        if (all > 0) share /= all;
    return frames;
}

}  // namespace

std::string groupText(std::size_t group) {
    return group == 0 ? "with a position" : reasonText(reasonKind(group - 1));
}

Strip::Strip(double fromMs, double toMs) : mColumns{fromMs, toMs, kColumns}, mFrames(kColumns, Shares{}) {}

void Strip::add(double beginMs, double endMs, std::size_t group) {
    const std::size_t last = mColumns.at(endMs);
    for (std::size_t i = mColumns.at(beginMs); i <= last; ++i)
        mFrames[i][group] += 1;
}

std::string Strip::polygons(std::size_t group) const {
    const double width = (mColumns.toMs - mColumns.fromMs) / static_cast<double>(kColumns);  // a small number
    const auto edge = [&](auto column) {
        return mColumns.fromMs + static_cast<double>(column - mFrames.begin()) * width;
    };
    std::string rows;
    for (auto begin = mFrames.begin(); begin != mFrames.end();) {
        const auto end = std::find_if(begin, mFrames.end(), [&](const Shares& next) { return next != *begin; });
        const Shares shares = sharesOf(*begin);
        if (shares.at(group) > 0) {
            // Reasons from the bottom up, then the frames with a position.
            const auto* const first = group == 0 ? shares.end() : shares.begin() + narrow<std::ptrdiff_t>(group);
            const double bottom = -0.5 + std::accumulate(shares.begin() + 1, first, 0.0);
            rows += fmt::format("{0:.10g} {2:.6g}\n{1:.10g} {2:.6g}\n{1:.10g} {3:.6g}\n{0:.10g} {3:.6g}\n\n",
                                edge(begin), edge(end), bottom, bottom + shares.at(group));
        }
        begin = end;
    }
    return rows;
}

}  // namespace replay
