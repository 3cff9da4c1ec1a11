// Makes a session from a recorder's lens positions and its frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "tools/replay/import/ColumnLog.h"

namespace replay::import {

inline constexpr char kOisColumns[] = "frame,x,y,time";
inline constexpr char kFrameColumns[] = "time,exposure,-,readout,-,-,frame";

struct ColumnOptions {
    std::string oisFile;
    std::string framesFile;
    std::string oisColumns = kOisColumns;
    std::string frameColumns = kFrameColumns;
    TimeUnit oisUnit = TimeUnit::kNs;
    TimeUnit frameUnit = TimeUnit::kNs;
    std::optional<std::uint32_t> readoutNs;  // of every frame, where no column gives it
    std::size_t delay = 2;                   // frames between a frame and the question for its position
};

struct ColumnSession {
    std::string text;
    std::size_t frames = 0;
    std::size_t samples = 0;
    std::size_t unused = 0;  // samples of frames that are not there
};

// The session hands over each frame's samples and asks for the frame `delay` frames later, the last ones at the end.
// Samples belong to the frame that their column names; without such a column, to the first one whose readout ends after
// them. Columns hall_x and hall_y are the hall sensor's counts, and the positions again where there are none.
// Throws SessionError for lines that cannot be read, std::invalid_argument for columns that do not do.
ColumnSession importColumns(std::istream& ois, std::istream& frames, const ColumnOptions& options);

}  // namespace replay::import
