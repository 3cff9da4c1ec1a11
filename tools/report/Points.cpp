#include "tools/report/Points.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

// The least and the largest, in order of time: a line through those of falling points falls.
std::pair<double, double> extremes(std::span<const Point> points, double Point::*axis) {
    const auto [low, high] = std::ranges::minmax(points, {}, axis);
    return low.ms < high.ms ? std::pair{low.*axis, high.*axis} : std::pair{high.*axis, low.*axis};
}

}  // namespace

std::size_t Columns::at(double ms) const {
    const double share = std::clamp((ms - fromMs) / (toMs - fromMs), 0.0, 1.0);
    return std::min(count - 1, static_cast<std::size_t>(share * static_cast<double>(count)));  // both small
}

std::string row(const Point& point) {
    return fmt::format("{:.10g} {:.10g} {:.10g}\n", point.ms, point.x, point.y);
}

double longestStep(const std::vector<Point>& points) {
    constexpr double kPeriods = 3;
    std::vector<double> steps;
    for (std::size_t i = 1; i < points.size(); ++i)
        steps.push_back(points[i].ms - points[i - 1].ms);
    if (steps.empty()) return std::numeric_limits<double>::infinity();
    const auto middle = steps.begin() + narrow<std::ptrdiff_t>(steps.size() / 2);
    std::ranges::nth_element(steps, middle);
    return kPeriods * *middle;
}

std::string thinnedRows(std::span<const Point> points, const Columns& columns, double longestMs) {
    const bool each = points.size() <= 2 * columns.count;
    std::string rows;
    for (std::size_t i = 0; i < points.size();) {
        if (i > 0 && points[i].ms - points[i - 1].ms > longestMs) rows += "\n";
        std::size_t end = i + 1;
        while (!each && end < points.size() && columns.at(points[end].ms) == columns.at(points[i].ms))
            ++end;
        const auto its = points.subspan(i, end - i);
        const auto [firstX, lastX] = extremes(its, &Point::x);
        const auto [firstY, lastY] = extremes(its, &Point::y);
        rows += row({its.front().ms, firstX, firstY});
        if (its.size() > 1) rows += row({its.back().ms, lastX, lastY});
        i = end;
    }
    return rows;
}

}  // namespace replay
