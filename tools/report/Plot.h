// A recording as a picture: a script for gnuplot, and running it. The script is a pure function of its input.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/report/Recording.h"

namespace replay {

struct PlotOptions {
    std::string file;                    // .svg, .png, or .gp for the script itself
    std::string title;                   // the session's name
    std::optional<std::int32_t> sensor;  // nothing: the one with the lowest id
    TimeLimits limits;
};

// Whether the name ends as one of the three.
bool isPlotName(const std::string& file);

// The script that draws one sensor: hall x and y with spans used and positions, and below the frames with the reasons
// of those without a position. The script of a .gp file draws a .png beside it. Throws std::invalid_argument when the
// session has no such sensor or nothing between the two times.
std::string plotScript(const Recording& recording, const PlotOptions& options);

// Draws `file` by its script, or writes the script. Throws StreamError when the file cannot be written, gnuplot is not
// there or gives up.
void plot(const std::string& script, const std::string& file);

}  // namespace replay
