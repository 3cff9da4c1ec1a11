// Decodes the two blocks of a module's OTP memory, and gives callers their answers from them. Pure functions; the
// caller guarantees that kOtpMemorySize bytes can be read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "customer/aaa/aaa/lsc/OtpRecords.h"

namespace lsc {

// Limit that this library sets to a module's OTP memory, far above the 8 to 16 KiB of common parts. A word at or beyond
// it comes from a driver that does not know the module.
inline constexpr std::uint32_t kOtpMemorySize = 64 * 1024;  // bytes

// The verdict on a block.
enum class BlockState {
    kValid,
    kNotValid,  // its marker byte is not 1
    kOutside,   // its layout names bytes at or beyond the limit; none of those was read
    kNoMemory,  // valid, but there was no memory for the table
};

// The gradient that selects a golden shading table.
struct GoldenGradient {
    std::int32_t value;  // signed magnitude
    std::int32_t sign;   // the sign byte: as a signed number for a negative gradient, unchanged otherwise
};
GoldenGradient signedGradient(std::uint8_t magnitude, std::uint8_t flag);
// Index of the golden shading table, 1 to 5.
std::int32_t multiTableIndex(std::int32_t gradient);

// The multi-golden block. The marker is read wherever it lies within the limit, the other words count only when it
// is 1.
struct GoldenBlock {
    BlockState state;
    std::uint8_t marker = 0;       // once read
    GoldenGradient gradient = {};  // of a valid block, and so the index
    std::int32_t tableIndex = 0;
};
GoldenBlock decodeBlock(const OTPInfo::MultiGolden& layout, const std::uint8_t* otp);

// The OIS calibration block, read in the same order.
struct CalibrationBlock {
    BlockState state;
    std::uint8_t marker = 0;                          // once read
    std::unique_ptr<std::uint8_t[]> table = nullptr;  // of a valid block: reordered, storedBytes() of it
};
CalibrationBlock decodeBlock(const OTPInfo::OisCalibration& layout, const std::uint8_t* otp) noexcept;

// Length in bytes of the table in the OTP memory: rows * entries * 2.
std::uint64_t tableBytes(const OTPInfo::OisCalibration& layout);

// Bytes of the table that are kept in memory: its rows, up to the layout's size. What the size has beyond the rows are
// zeros, which are not stored, whatever size a driver claims.
std::size_t storedBytes(const OTPInfo::OisCalibration& layout);

// Copies the table row by row: entry 0 keeps its place, entries 1 to n - 1 are reversed; an entry is its 2 bytes as
// stored. Only whole entries are written, at most `capacity` bytes. A table whose rows have no entries has nothing to
// copy, whatever its number of rows. Source and destination must not overlap.
void reorderTable(const std::uint8_t* source, std::uint8_t* destination, std::uint64_t capacity,
                  const OTPInfo::OisCalibration& layout);

// Copies the decoded table as callers get it, with zeros after its rows, to `destination` of `capacity` bytes. Returns
// the number of bytes copied: the layout's size, at most `capacity`.
std::size_t copyTable(const std::uint8_t* table, const OTPInfo::OisCalibration& layout, std::uint8_t* destination,
                      std::size_t capacity);

}  // namespace lsc
