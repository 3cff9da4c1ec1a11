// How far one clock is from another, and whether it drifts: from differences taken over a session, in memory that does
// not grow with its length.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "tools/report/Histogram.h"

namespace replay {

class Clock {
public:
    // At `atNs` of the reference clock, this one was `differenceNs` ahead.
    void add(std::uint64_t atNs, std::int64_t differenceNs);

    std::uint64_t count() const { return mLater.count() + mEarlier.count(); }
    // In us, from the least (0) over the median (0.5) to the largest difference (1); 0 without any.
    std::int64_t quantileUs(double share) const;

    struct Drift {
        double ppm = 0.0;
        double totalUs = 0.0;  // over the session
        bool steady = false;   // both halves of the session show it: no step, and no chance
    };
    // The median of the slopes of all pairs of points that were kept. Nothing with too few points, or when they
    // are no clock's.
    std::optional<Drift> drift() const;

private:
    using Point = std::pair<double, double>;  // us from the first point on: time, difference
    using Points = std::vector<Point>;

    static double slope(Points::const_iterator begin, Points::const_iterator end);

    // Differences are counted from the first one on, so that the histograms tell small changes of large ones apart.
    std::optional<std::pair<std::uint64_t, std::int64_t>> mFirst;
    Histogram mLater;  // us
    Histogram mEarlier;
    Points mPoints;  // every mStride-th
    std::uint64_t mStride = 1;
};

}  // namespace replay
