// The exposures of a recording as comma-separated values, a row each. docs/data.md explains the columns.
#pragma once

#include <ostream>

#include "tools/report/Recording.h"

namespace replay {

inline constexpr char kExposureColumns[] =
    "frame,sensor,type,start_ns,exposure_ns,readout_ns,x,y,span,match_us,reason,detail,error_x,error_y";

// Sensor by sensor, in the order in which the exposures were asked for; below the names of the columns. Numbers have
// the digits that give the same number when read. A value that an exposure does not have is empty; the error is the one
// against the samples of the recording, which must be finished.
void writeExposures(std::ostream& out, const Recording& recording);

}  // namespace replay
