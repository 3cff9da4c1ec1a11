// Lines of a session as text, and the comments and settings at the head of one that was made from a capture. Pure.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/replay/import/Capture.h"

namespace replay::import {

// A call for a sensor, with further arguments as JSON.
std::string callLine(std::string_view function, std::int32_t sensor,
                     std::initializer_list<std::pair<std::string_view, std::string>> arguments);

// Metadata with a frame's exposure mode and timing; a start of frame and an exposure block only where there is one.
std::string frameMetadata(std::string_view name, bool multi, const Timing& timing, bool hasStart, bool hasExposure);
// Metadata of a frame that has its positions; which ones, nothing tells.
std::string writtenMetadata(std::string_view name, bool multi);

// The CalcOISValue call of one exposure.
std::string calculationLine(std::int32_t sensor, const ExposureCall& exposure);

// A file's name for a comment, in which it may not end the line.
std::string inComment(std::string name);

// Everything before the first sensor's line.
std::string sessionHead(const Capture& capture, const std::string& name, const std::vector<std::string>& assumptions,
                        const std::vector<std::string>& holes);

}  // namespace replay::import
