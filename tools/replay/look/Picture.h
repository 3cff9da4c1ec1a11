// One sensor's recording between two times, as the rows of numbers that a plotting program reads: a line each, columns
// parted by spaces, an empty line where a line to draw is broken. Times are in ms from the first sample.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/replay/look/Recording.h"

namespace replay {

// A number as the rows have it.
std::string number(double value);

class Picture {
public:
    // `sensor` must outlive the picture. Without limits, everything is shown. Throws std::invalid_argument when the
    // limits are no finite numbers or the first is not below the second.
    Picture(const SensorRecording& sensor, std::int64_t beginNs, std::optional<double> fromMs,
            std::optional<double> toMs);

    double from() const { return mFrom; }
    double to() const { return mTo; }
    bool isEmpty() const { return samplesWithin(mFrom, mTo).empty() && mBands.empty(); }
    // Few enough exposures to show each with its parts.
    bool isDetailed() const;
    std::size_t exposures() const { return mBands.size(); }
    std::size_t unserved() const;

    // Time, x, y. Where there are very many samples, the extremes of each column of the picture stand for the rest.
    std::string samples() const;
    // The same of the samples that each position came from.
    std::string spans() const;
    // Middle of the span, x, y, begin and end of the span.
    std::string positions() const;

    // Middle, lane, and the four borders of boxes. Lanes are 1 high, centred at 0, 1, ...; boxes of one lane do not
    // overlap, unless there are more exposures at a time than lanes, or too many exposures for lanes at all.
    std::string exposureBoxes() const { return boxes(&Band::exposed, &Band::read, false); }
    std::string readoutBoxes() const { return boxes(&Band::read, &Band::finished, false); }
    // Exposure and readout of those without a position.
    std::string missedBoxes() const { return boxes(&Band::exposed, &Band::finished, true); }
    // Start of the exposure, or near it where the text fits, height above the lanes, and in quotes why it has no
    // position. Without room for each, one for all that follow each other for the same kind of reason.
    std::string reasons() const;
    // The upper end of the boxes and reasons.
    double top() const;

private:
    struct Band {
        const ExposureOutcome* outcome;
        double exposed;  // ms, as in ExposureTimesNs
        double read;
        double finished;
        int lane;
    };

    double ms(std::int64_t ns) const;
    void setLimits(std::optional<double> fromMs, std::optional<double> toMs);
    void findBands();
    // The finite samples from one time to another, both inclusive.
    std::vector<RecordedSample> samplesWithin(double fromMs, double toMs) const;
    double longestStepMs(const std::vector<RecordedSample>& samples) const;
    std::string row(const RecordedSample& sample) const;
    std::string boxes(double Band::*begin, double Band::*end, bool missedOnly) const;
    double topOfBoxes() const;

    const SensorRecording& mSensor;
    const std::int64_t mBeginNs;
    double mFrom = 0;
    double mTo = 0;
    int mLanes = 1;
    std::vector<Band> mBands;  // of exposures that touch the picture
};

}  // namespace replay
