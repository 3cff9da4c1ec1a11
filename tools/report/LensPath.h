// Where a lens was at any time: points in order of time with straight lines between them. Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/report/Recording.h"

namespace replay {

struct PathPoint {
    std::int64_t timeNs;
    Position position;
};

class LensPath {
public:
    // The points in any order. Points that are not finite, and all but the first of one time, are left out.
    explicit LensPath(std::vector<PathPoint> points);

    // Whether the path is known from one time to another, both inclusive: it is not before its first point, after its
    // last, or in a step of more than two median ones.
    bool covers(std::int64_t fromNs, std::int64_t toNs) const;

    // The mean over the exposure of all rows, in closed form. The weight of a moment is the share of rows that it
    // exposes: exposure convolved with readout, a trapezoid from the begin of the first row's exposure to the end of
    // the last row's. The path must cover that time.
    Position meanOver(const RowTimes& rows) const;

private:
    std::vector<PathPoint> mPoints;
    std::vector<std::int64_t> mGapEnds;  // times at which a too long step ends, ascending
};

// The path that the sensor's samples show, if their time stamps are `stampDelayNs` late.
LensPath pathOf(const SensorRecording& sensor, std::int64_t stampDelayNs);

// The same exposure `shiftNs` later.
RowTimes shifted(const RowTimes& rows, std::int64_t shiftNs);

}  // namespace replay
