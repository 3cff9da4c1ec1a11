// Decides which sensor a call was for where no message says so. What was assumed is noted in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/replay/import/Capture.h"

namespace replay::import {

// The type of a sensor's samples that is assumed when no message tells.
inline constexpr std::int32_t kAssumedType = 5;

// Sensors that the capture's messages name, in the order of their first mention.
std::vector<std::int32_t> namedSensors(const Capture& capture);

// The type that a message gives the sensor, or the assumed one.
std::int32_t typeOf(const Capture& capture, std::int32_t sensor);

// Gives every UpdateCall and FrameCall of `capture` a sensor. Adds a line of text for each kind of assumption.
void nameSensors(Capture& capture, std::vector<std::string>& assumptions);

}  // namespace replay::import
