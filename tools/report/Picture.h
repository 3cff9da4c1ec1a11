// One sensor's recording between two times, as the rows of numbers that a plotting program reads: a line each, columns
// parted by spaces, an empty line where a line to draw is broken. Times are in ms from the first sample. Never more
// rows than a picture has columns of pixels, give or take a factor of four: the extremes of a column stand for the
// rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/report/Points.h"
#include "tools/report/Recording.h"

namespace replay {

class Picture {
public:
    static constexpr std::size_t kColumns = 1500;

    // A reason to be written above the frames.
    struct Label {
        double ms;  // begin of the exposure, within the picture
        std::size_t group;
        std::string text;
    };

    // `sensor` must outlive the picture, which is `columns` pixels wide. Without limits, everything is shown.
    Picture(const SensorRecording& sensor, const Extent& extent, const TimeLimits& limits,
            std::size_t columns = kColumns);

    // With a margin around what was recorded.
    double from() const { return mFrom; }
    double to() const { return mTo; }
    // When the sensor's samples and exposures begin and end.
    double first() const { return mFirst; }
    double last() const { return mLast; }
    bool isEmpty() const { return samplesWithin(mFrom, mTo).empty() && mBands.empty(); }
    // Few enough exposures to show the shape of each.
    bool isDetailed() const;
    std::size_t exposures() const { return mBands.size(); }
    std::size_t count(std::size_t group) const;
    std::size_t unserved() const { return exposures() - count(0); }
    // Exposures that had a position already. They count for nothing else: the first time was drawn.
    std::size_t askedAgain() const { return mAskedAgain; }
    // The least and the largest rolling shutter, exposure and span, in words.
    std::string ranges() const;

    // The least and the largest x or y of samples and positions; nothing without any.
    std::optional<std::pair<double, double>> extremes(double Point::*axis) const;

    // Time, x, y.
    std::string samples() const;
    std::size_t countSamples() const { return samplesWithin(mFrom, mTo).size(); }
    // The same of the samples that each position came from; only when detailed.
    std::string spans() const;
    // Middle of the span, x, y; when detailed, also begin and end of the span.
    std::string positions() const;
    // The same of what a device found, without begin and end.
    std::string devicePositions() const;
    // Time, x and y here, x and y on the device, where both differ. Where one has no position, the other's stands
    // twice.
    std::string differences() const;
    std::size_t countDifferences() const { return differing().size(); }

    // The frames of a group (Strip.h) as polygons: time and height of each corner. Detailed: rows from the top to the
    // bottom of the sensor against the times when they are exposed, in lanes that are 1 high and centred at 0, 1, ...;
    // frames of one lane do not overlap, as long as six lanes are enough. Otherwise one lane for all, as a strip
    // (Strip.h).
    std::string frames(std::size_t group) const;
    // Begin and end of the spans, below the frames in their lanes; only when detailed.
    std::string spanBars() const;
    int lanes() const { return isDetailed() ? mLanes : 1; }

    // Begin, within the picture, and group of each exposure without a position.
    std::vector<std::pair<double, std::size_t>> unservedTimes() const;
    // Why exposures have no position: each of a few, otherwise the first of each kind.
    std::vector<Label> labels() const;

private:
    struct Band {
        const RecordedExposure* exposure;
        double exposed;  // ms, as in RowTimes
        double read;
        double finished;
        int lane;
    };
    struct Difference {
        Point here;
        Position device;
    };

    static std::size_t groupOf(const Band& band);
    double ms(std::int64_t ns) const { return mExtent.ms(ns); }
    void setLimits(const TimeLimits& limits);
    void findBands();
    // When the position belongs into the picture: the middle of its span; without one, of the exposure.
    double middle(const Band& band) const;
    // The finite samples from one time to another, both inclusive.
    std::vector<Point> samplesWithin(double fromMs, double toMs) const;
    std::vector<Difference> differing() const;
    // The rows of points in any order; a line is broken between points more than `longestMs` apart.
    std::string thinned(std::vector<Point> points, double longestMs) const;
    std::string polygons(std::size_t group) const;
    std::string strip(std::size_t group) const;

    const SensorRecording& mSensor;
    const Extent& mExtent;
    const std::size_t mColumns;
    double mFirst = 0;
    double mLast = 0;
    double mFrom = 0;
    double mTo = 0;
    int mLanes = 1;
    std::vector<Band> mBands;  // of exposures that touch the picture
    std::size_t mAskedAgain = 0;
};

}  // namespace replay
