// One line of a logcat capture taken apart. Reads what `logcat -v threadtime`, `-v time` and `-v brief` print, also
// with the modifiers year, uid, zone, usec, nsec, epoch and monotonic. Pure; any bytes may stand in a line.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace replay::import {

// The texts point into the line that was parsed.
struct LogLine {
    std::string_view time;  // as it stands there, without a zone; empty in brief
    std::uint32_t pid = 0;
    std::optional<std::uint32_t> tid;  // only threadtime tells
    char priority = '?';               // V, D, I, W, E, F, S or A
    std::string_view tag;
    std::string_view text;
};

// Nothing for a line of another format: a banner, a continuation, a line cut within its head. The line comes without
// its end.
std::optional<LogLine> parseLogLine(std::string_view line);

}  // namespace replay::import
