// A session's line for a sensor: its OTP memory as far as the library's messages tell, and its rolling-shutter times.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/replay/import/Capture.h"

namespace replay::import {

using ShutterTimes = std::map<std::uint32_t, std::uint32_t>;  // ns of each sensor mode; 0: the driver did not answer

// Where `facts` say nothing, the memory is one with markers at made-up offsets. `served`: the library was seen to
// compute for the sensor, so that its OIS calibration is valid even if no message says so. The calibration table
// itself is in no message and is all zeros.
std::string sensorLine(std::int32_t sensor, const OtpFacts& facts, bool served, const ShutterTimes& times);

}  // namespace replay::import
