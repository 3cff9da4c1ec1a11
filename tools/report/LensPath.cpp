#include "tools/report/LensPath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

namespace replay {
namespace {

bool isFinite(const PathPoint& point) {
    return std::isfinite(point.position.x) && std::isfinite(point.position.y);
}

std::int64_t medianStep(const std::vector<PathPoint>& points) {
    std::vector<std::int64_t> steps;
    for (std::size_t i = 1; i < points.size(); ++i)
        steps.push_back(points[i].timeNs - points[i - 1].timeNs);
    if (steps.empty()) return 0;
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);  // within the list
    std::ranges::nth_element(steps, middle);
    return *middle;
}

Position between(const PathPoint& a, const PathPoint& b, double timeNs) {
    const double share = timeNs / static_cast<double>(b.timeNs - a.timeNs);  // far below 2^53
    return {std::lerp(a.position.x, b.position.x, share), std::lerp(a.position.y, b.position.y, share)};
}

// The trapezoid, in ns from the begin of the first row's exposure.
struct RowWeight {
    explicit RowWeight(const RowTimes& rows) {
        const auto exposure = static_cast<double>(rows.read - rows.exposed);  // a few s at most
        const auto readout = static_cast<double>(rows.finished - rows.read);  // the same
        ramp = std::min(exposure, readout);
        end = exposure + readout;
    }

    // A box when one of the two takes no time.
    double at(double time) const { return ramp > 0 ? std::max(0.0, std::min({time, ramp, end - time})) : 1; }

    double ramp;
    double end;
};

// A weighted mean, from pieces over which path and weight are linear.
struct Mean {
    // Simpson's rule, which is exact for their product.
    void add(double length, const std::array<double, 3>& weights, const std::array<Position, 3>& path) {
        constexpr std::array<double, 3> kShares{1.0 / 6, 4.0 / 6, 1.0 / 6};
        for (std::size_t i = 0; i < kShares.size(); ++i) {
            const double weight = length * kShares[i] * weights[i];
            sum.x += weight * path[i].x;
            sum.y += weight * path[i].y;
            all += weight;
        }
    }
    Position value() const { return {sum.x / all, sum.y / all}; }

    Position sum;
    double all = 0;
};

}  // namespace

LensPath::LensPath(std::vector<PathPoint> points) : mPoints(std::move(points)) {
    std::erase_if(mPoints, [](const PathPoint& point) { return !isFinite(point); });
    std::ranges::stable_sort(mPoints, {}, &PathPoint::timeNs);
    const auto repeated = std::ranges::unique(mPoints, {}, &PathPoint::timeNs);
    mPoints.erase(repeated.begin(), repeated.end());
    const std::int64_t longest = 2 * medianStep(mPoints);
    for (std::size_t i = 1; i < mPoints.size(); ++i) {
        if (mPoints[i].timeNs - mPoints[i - 1].timeNs > longest) mGapEnds.push_back(mPoints[i].timeNs);
    }
}

bool LensPath::covers(std::int64_t fromNs, std::int64_t toNs) const {
    if (mPoints.empty() || fromNs < mPoints.front().timeNs || toNs > mPoints.back().timeNs) return false;
    // The first gap that ends after the begin must begin at the end or later.
    const auto gapEnd = std::ranges::upper_bound(mGapEnds, fromNs);
    if (gapEnd == mGapEnds.end()) return true;
    const auto point = std::ranges::lower_bound(mPoints, *gapEnd, {}, &PathPoint::timeNs);
    return (point - 1)->timeNs >= toNs;
}

Position LensPath::meanOver(const RowTimes& rows) const {
    const RowWeight weight(rows);
    const auto relative = [&rows](const PathPoint& point) {
        return static_cast<double>(point.timeNs - rows.exposed);  // within the step before, or the exposure
    };
    const auto past = std::ranges::upper_bound(mPoints, rows.exposed, {}, &PathPoint::timeNs);
    if (past == mPoints.end()) return mPoints.back().position;
    auto next = past;
    const auto at = [&](double time) { return between(*(next - 1), *next, time - relative(*(next - 1))); };
    if (weight.end == 0) return at(0);

    Mean mean;
    double begin = 0;
    for (const double corner : {weight.ramp, weight.end - weight.ramp, weight.end}) {
        while (begin < corner) {
            const double end = std::min(corner, relative(*next));
            const double middle = std::midpoint(begin, end);
            mean.add(end - begin, {weight.at(begin), weight.at(middle), weight.at(end)},
                     {at(begin), at(middle), at(end)});
            begin = end;
            if (begin == relative(*next) && begin < weight.end) ++next;
        }
    }
    return mean.value();
}

LensPath pathOf(const SensorRecording& sensor, std::int64_t stampDelayNs) {
    std::vector<PathPoint> points;
    points.reserve(sensor.samples.size());
    for (const RecordedSample& sample : sensor.samples)
        points.push_back(
            {sample.timeNs - stampDelayNs, {static_cast<double>(sample.x), static_cast<double>(sample.y)}});
    return LensPath(std::move(points));
}

RowTimes shifted(const RowTimes& rows, std::int64_t shiftNs) {
    return {rows.exposed + shiftNs, rows.read + shiftNs, rows.finished + shiftNs};
}

}  // namespace replay
