// A recording as a picture: a script for gnuplot, and running it. The script is a pure function of its input.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/replay/look/Recording.h"

namespace replay {

struct PlotOptions {
    std::string file;                    // .svg, .png, or .gp for the script itself
    std::string title;                   // the session's name
    std::optional<std::int32_t> sensor;  // nothing: the one with the lowest id
    std::optional<double> fromMs;        // from the first sample; nothing: the first sample or exposure
    std::optional<double> toMs;
};

// Whether the name ends as one of the three.
bool isPlotName(const std::string& file);

// The script that draws one sensor: hall x and y with spans used and positions, and the frames' exposures and readouts
// below. Throws std::invalid_argument when the session has no such sensor or nothing between the two times.
std::string plotScript(const Recording& recording, const PlotOptions& options);

// Draws the picture, or writes the script. Throws std::invalid_argument as above, StreamError when the file cannot be
// written, gnuplot is not there or gives up.
void plot(const Recording& recording, const PlotOptions& options);

}  // namespace replay
