// Points to be drawn, no finer than the columns of pixels of a picture.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace replay {

struct Point {
    double ms;
    double x;
    double y;
};

// Equal columns between two times.
struct Columns {
    // That of a time; a time outside is in the first or the last.
    std::size_t at(double ms) const;

    double fromMs;
    double toMs;
    std::size_t count;
};

// Time, x and y in a line.
std::string row(const Point& point);

// The longest time between two points that still follow each other: three times the median; infinite for less than two.
double longestStep(const std::vector<Point>& points);

// The rows of points in order of time. Of more than two points a column, the extremes of each column stand for the
// rest. An empty row breaks the line between points more than `longestMs` apart.
std::string thinnedRows(std::span<const Point> points, const Columns& columns, double longestMs);

}  // namespace replay
