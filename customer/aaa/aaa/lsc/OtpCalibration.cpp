#include "customer/aaa/aaa/lsc/OtpCalibration.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace lsc {
namespace {

constexpr std::uint64_t kEntryBytes = 2;
constexpr std::uint8_t kLargestPositiveFlag = 128;

// Gradients this near to zero and to each other share a table.
constexpr std::int32_t kFlatGradient = 4;
constexpr std::int32_t kModerateGradient = 8;

}  // namespace

bool isPlausible(const OTPInfo::MultiGolden& block) {
    return std::max({block.valid, block.gradient, block.flag}) < kOtpMemorySize;
}

bool isPlausible(const OTPInfo::OisCalibration& block) {
    const std::uint64_t bytes = tableBytes(block);
    return block.valid < kOtpMemorySize && bytes <= kOtpMemorySize && block.offset + bytes <= kOtpMemorySize;
}

std::uint64_t tableBytes(const OTPInfo::OisCalibration& block) {
    const std::uint64_t entries = std::uint64_t{block.indexNum} * block.tableNumber;
    // Two 32-bit numbers fill 64 bits; doubling the largest product would wrap.
    return std::min(entries, UINT64_MAX / kEntryBytes) * kEntryBytes;
}

std::size_t storedBytes(const OTPInfo::OisCalibration& block) {
    return std::min<std::uint64_t>(block.size, tableBytes(block));
}

GoldenGradient signedGradient(std::uint8_t magnitude, std::uint8_t flag) {
    // As a signed byte, which is how the marker of a negative gradient is shown.
    if (flag > kLargestPositiveFlag) return {-magnitude, static_cast<std::int8_t>(flag)};
    return {magnitude, flag};
}

std::int32_t multiTableIndex(std::int32_t gradient) {
    const bool negative = gradient < 0;
    const std::int32_t magnitude = std::abs(gradient);
    if (magnitude <= kFlatGradient) return 1;
    if (magnitude <= kModerateGradient) return negative ? 3 : 2;
    return negative ? 5 : 4;
}

void reorderTable(const std::uint8_t* source, std::uint8_t* destination, std::uint64_t capacity,
                  const OTPInfo::OisCalibration& block) {
    const std::uint64_t columns = block.tableNumber;
    const std::uint64_t entries = std::min(tableBytes(block), capacity) / kEntryBytes;
    for (std::uint64_t entry = 0; entry < entries; ++entry) {
        const std::uint64_t column = entry % columns;
        const std::uint64_t from = column == 0 ? entry : entry - column + (columns - column);
        std::memcpy(destination + entry * kEntryBytes, source + from * kEntryBytes, kEntryBytes);
    }
}

}  // namespace lsc
