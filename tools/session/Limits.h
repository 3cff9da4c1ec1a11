// Limits of the session format that protect the tool's memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"

namespace replay {

// Longest line of a session, in bytes without its end. A million samples with all their digits fit.
inline constexpr std::size_t kMaxLineSize = std::size_t{128} << 20;

// All metadata objects of a session at one time, in bytes: their values, and kEntrySize more for each entry and object.
inline constexpr std::uint64_t kMaxMetadataSize = std::uint64_t{256} << 20;
inline constexpr std::uint64_t kEntrySize = 256;

// Largest memory block of a metadata object, in bytes.
inline constexpr std::uint64_t kMaxMemorySize = 1048576;

// Integers that one QueryOTPInfo may ask for: one for every byte that an OTP memory can hold.
inline constexpr std::uint64_t kMaxOtpLength = lsc::kOtpMemorySize;

}  // namespace replay
