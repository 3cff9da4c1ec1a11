// Samples that the capture lost and calculations list. Pure.
#pragma once

#include <cstdint>

#include "tools/import/SampleBuffer.h"
#include "tools/import/Timeline.h"

namespace replay::import {

// Marks a sample whose time is known to the microsecond alone, and whose hall counts are not.
inline constexpr std::uint32_t kRepaired = 1;  // in the field `status`, which no message prints

// The listed samples with times from `fromUs` to `toUs` that are neither in `known` nor in the buffer, in ascending
// order.
void addMissing(lsc::Samples& known, const std::vector<Listed>& listing, std::int64_t fromUs, std::int64_t toUs,
                const SampleBuffer& buffer);

// Adds to `known` what the calculations that follow list of a sensor. Returns how many samples it added.
std::size_t repair(lsc::Samples& known, const Timeline& ahead, std::int32_t sensor, std::int64_t fromUs,
                   std::int64_t toUs, const SampleBuffer& buffer);

}  // namespace replay::import
