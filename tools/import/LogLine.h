// One line of a logcat capture as a record. Reads the forms of logcat that carry a tag: brief, process, tag, time,
// threadtime and long, also with the modifiers year, uid, zone, usec, nsec, epoch, monotonic, printable, descriptive
// and color. Any bytes may stand in a line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace replay::import {

// The texts point into the line that was parsed.
struct LogLine {
    std::string_view time;             // as it stands there, without a zone; empty where the form has none
    std::optional<std::uint32_t> pid;  // not in the form tag
    std::optional<std::uint32_t> tid;  // only threadtime and long tell
    char priority = '?';               // V, D, I, W, E, F, S or A
    std::string_view tag;
    std::string_view text;
};

// Nothing for a line of another format: a banner, a continuation, a line cut within its head. The line comes without
// its end and without colours. The form long has no such lines: see LogParser.
std::optional<LogLine> parseLogLine(std::string_view line);

// The head of a record of the form long, "[ TIME PID:TID P/TAG ]"; `text` stays empty.
std::optional<LogLine> parseLongHead(std::string_view line);

// Parses lines in order: the records of the form long take several.
class LogParser {
public:
    // The record that this line is, or completes. Its texts live until the next call. `line` comes without its end.
    std::optional<LogLine> parse(std::string_view line);
    // Whether the lines are of the form long, whose heads are no records yet.
    bool isInLong() const { return mLong; }

private:
    std::string_view withoutColours(std::string_view line);

    std::string mPlain;  // a line without its colours
    std::string mHead;   // of the form long
    std::string mLastHead;
    bool mLong = false;  // the last line was the head of a record
};

}  // namespace replay::import
