// Limits of the session format that protect the tool's memory.
#pragma once

#include <cstdint>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"

namespace replay {

// Largest memory block of a metadata object, in bytes.
inline constexpr std::uint64_t kMaxMemorySize = 1048576;

// Integers that one QueryOTPInfo may ask for: one for every byte that an OTP memory can hold.
inline constexpr std::uint64_t kMaxOtpLength = lsc::kOtpMemorySize;

}  // namespace replay
