// The OIS hall dump: a text file with the samples and the result of one exposure, for tuning a module.
#pragma once

#include <cstdint>
#include <vector>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace lsc {

// Whether an exposure of this type is dumped: the single, the ne and the se exposure of a frame are.
bool isDumped(CustShadingType type);

// Writes (creates or truncates) "data/vendor/camera_dump/capture_camera_<sensor>_frame_<frame>_<start in
// us>_oishall.txt", relative to the working directory. The directory is not created; a file that cannot be opened is
// skipped, and so is anything but a regular file, such as a symbolic link. Never blocks. Returns false when the file
// was opened but could not be written whole. `x` and `y` are the call's outputs; their lines are left out unless each
// holds two values.
bool writeOisHallDump(int sensorId, unsigned int frame, const ExposureTimes& times, const ActiveSamples& samples,
                      const SpanSearch& span, const std::vector<double>& x, const std::vector<double>& y) noexcept;

}  // namespace lsc
