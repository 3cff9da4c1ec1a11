// The exposures of a recording as comma-separated values, a row each. docs/data.md explains the columns.
#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string>

#include "tools/report/LensPath.h"
#include "tools/report/Recording.h"

namespace replay {

inline constexpr char kExposureColumns[] =
    "frame,sensor,type,start_ns,exposure_ns,readout_ns,x,y,span,match_us,reason,detail,error_x,error_y";

// Where each column stands.
struct ExposureColumn {
    enum : std::size_t {
        kFrame,
        kSensor,
        kType,
        kStart,
        kExposure,
        kReadout,
        kX,
        kY,
        kSpan,
        kMatch,
        kReason,
        kDetail,
        kErrorX,
        kErrorY,
        kCount
    };
};

// The values of a row. Numbers have the digits that give the same number when read. A value
// that an exposure does not have is empty; the error is the one against the path.
using ExposureCells = std::array<std::string, ExposureColumn::kCount>;
ExposureCells exposureCells(const ExposureOutcome& outcome, const LensPath& path);

// The rows of all exposures, sensor by sensor, in the order in which they were asked for; below the names of the
// columns. Errors are those against the samples of the recording, which must be finished.
void writeExposures(std::ostream& out, const Recording& recording);

}  // namespace replay
