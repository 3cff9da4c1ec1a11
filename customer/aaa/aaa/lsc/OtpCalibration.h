// Arithmetic on OTP calibration data. Pure functions; the caller vouches that bytes named by a checked layout record
// can be read.
#pragma once

#include <cstddef>
#include <cstdint>

#include "customer/aaa/aaa/lsc/OtpRecords.h"

namespace lsc {

// Limit that this library sets to a module's OTP memory, far above the 8 to 16 KiB of common parts. A word at or beyond
// it comes from a driver that does not know the module.
inline constexpr std::uint32_t kOtpMemorySize = 64 * 1024;  // bytes

// Whether every byte that the block's record names lies within an OTP memory.
bool isPlausible(const OTPInfo::MultiGolden& block);
bool isPlausible(const OTPInfo::OisCalibration& block);

// Length in bytes of the table in the OTP memory: rows * entries * 2.
std::uint64_t tableBytes(const OTPInfo::OisCalibration& block);

// How much of the table is kept in memory: its rows, as far as its size reaches. A size beyond the rows stands for
// zeros, which need no memory, whatever a driver claims.
std::size_t storedBytes(const OTPInfo::OisCalibration& block);

// The gradient that selects a golden shading table.
struct GoldenGradient {
    std::int32_t value;  // signed magnitude
    std::int32_t sign;   // the sign byte as a signed number when negative, as it is otherwise
};
GoldenGradient signedGradient(std::uint8_t magnitude, std::uint8_t flag);
// Index of the golden shading table, 1 to 5.
std::int32_t multiTableIndex(std::int32_t gradient);

// Copies the table row by row: entry 0 keeps its place, entries 1 to n - 1 are reversed; an entry is its 2 bytes as
// stored. Whole entries are written as far as `capacity` bytes reach. Source and destination must not overlap.
void reorderTable(const std::uint8_t* source, std::uint8_t* destination, std::uint64_t capacity,
                  const OTPInfo::OisCalibration& block);

}  // namespace lsc
