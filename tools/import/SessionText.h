// Lines of a session as text, and the comments and settings at the head of one that was made from a capture. Pure.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "tools/import/Calls.h"

namespace replay::import {

// A call for a sensor, with further arguments as JSON.
std::string callLine(std::string_view function, std::int32_t sensor,
                     std::initializer_list<std::pair<std::string_view, std::string>> arguments);

// Metadata with a frame's exposure mode and timing; a start of frame and an exposure block only where there is one.
std::string frameMetadata(const std::string& name, bool multi, const Timing& timing, bool hasStart, bool hasExposure);
// Metadata of a frame that has its positions; which ones, nothing tells.
std::string writtenMetadata(const std::string& name, bool multi);

// The CalcOISValue call of one exposure, and the start of frame (ns) that it gives.
std::string calculationLine(std::int32_t sensor, const Exposure& exposure);
std::uint64_t startOf(const Exposure& exposure);

// The line that delivers samples of a type.
std::string samplesLine(std::int32_t type, const lsc::Samples& samples);

// A text for a comment, in which it may not end the line.
std::string inComment(std::string text);

// "1 sample", "2 samples".
std::string countOf(std::size_t count, std::string_view what);
// That the calls for `count` frames are, as a notice.
std::string callsMissing(std::size_t count, std::string_view where);

// What the session sets before the first call.
struct Settings {
    bool everySample = false;  // log level 4
    std::int32_t calculationMode = 0;
    std::int32_t forcedIndex = 0;
};
std::string sessionHead(const std::string& name, const Settings& settings);

}  // namespace replay::import
