// A session's line for a sensor: its OTP memory as far as the library's messages tell, and its rolling-shutter times.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/import/Calls.h"

namespace replay::import {

using ShutterTimes = std::map<std::uint32_t, std::uint32_t>;  // ns of each sensor mode; 0: the driver did not answer

// The type of a sensor's samples that is assumed when no message tells.
inline constexpr std::int32_t kAssumedType = 5;

// Where `read` says nothing, the memory is one with markers at made-up offsets, its OIS calibration valid. The
// calibration table itself is in no message and is all zeros.
std::string sensorLine(std::int32_t sensor, const OtpRead& read, const ShutterTimes& times);

}  // namespace replay::import
