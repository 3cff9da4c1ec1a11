#include "customer/aaa/aaa/lsc/OtpCalibration.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace lsc {
namespace {

constexpr std::uint8_t kBlockValid = 1;
constexpr std::uint64_t kEntryBytes = 2;
constexpr std::uint8_t kLargestPositiveFlag = 128;

// Gradients this near to zero and to each other share a table.
constexpr std::int32_t kFlatGradient = 4;
constexpr std::int32_t kModerateGradient = 8;

}  // namespace

std::uint64_t tableBytes(const OTPInfo::OisCalibration& layout) {
    const std::uint64_t entries = std::uint64_t{layout.indexNum} * layout.tableNumber;
    // Two 32-bit numbers fill 64 bits; doubling the largest product would wrap.
    return std::min(entries, UINT64_MAX / kEntryBytes) * kEntryBytes;
}

std::size_t storedBytes(const OTPInfo::OisCalibration& layout) {
    return std::min<std::uint64_t>(layout.size, tableBytes(layout));
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

GoldenBlock decodeBlock(const OTPInfo::MultiGolden& layout, const std::uint8_t* otp) {
    if (layout.valid >= kOtpMemorySize) return {BlockState::kOutside};
    const std::uint8_t marker = otp[layout.valid];
    if (marker != kBlockValid) return {BlockState::kNotValid, marker};
    if (std::max(layout.gradient, layout.flag) >= kOtpMemorySize) return {BlockState::kOutside, marker};
    const GoldenGradient gradient = signedGradient(otp[layout.gradient], otp[layout.flag]);
    return {BlockState::kValid, marker, gradient, multiTableIndex(gradient.value)};
}

CalibrationBlock decodeBlock(const OTPInfo::OisCalibration& layout, const std::uint8_t* otp) noexcept {
    if (layout.valid >= kOtpMemorySize) return {BlockState::kOutside};
    const std::uint8_t marker = otp[layout.valid];
    if (marker != kBlockValid) return {BlockState::kNotValid, marker};
    const std::uint64_t bytes = tableBytes(layout);
    if (bytes > kOtpMemorySize || layout.offset + bytes > kOtpMemorySize) return {BlockState::kOutside, marker};
    const std::size_t stored = storedBytes(layout);
    std::unique_ptr<std::uint8_t[]> table(new (std::nothrow) std::uint8_t[stored]());
    if (!table) return {BlockState::kNoMemory, marker};
    reorderTable(otp + layout.offset, table.get(), stored, layout);
    return {BlockState::kValid, marker, std::move(table)};
}

void reorderTable(const std::uint8_t* source, std::uint8_t* destination, std::uint64_t capacity,
                  const OTPInfo::OisCalibration& layout) {
    const std::uint64_t columns = layout.tableNumber;
    const std::uint64_t entries = std::min(tableBytes(layout), capacity) / kEntryBytes;
    for (std::uint64_t entry = 0; entry < entries; ++entry) {
        const std::uint64_t column = entry % columns;
        const std::uint64_t from = column == 0 ? entry : entry - column + (columns - column);
        std::memcpy(destination + entry * kEntryBytes, source + from * kEntryBytes, kEntryBytes);
    }
}

std::size_t copyTable(const std::uint8_t* table, const OTPInfo::OisCalibration& layout, std::uint8_t* destination,
                      std::size_t capacity) {
    const std::size_t size = std::min<std::size_t>(capacity, layout.size);
    const std::size_t stored = std::min(size, storedBytes(layout));
    std::fill_n(std::copy_n(table, stored, destination), size - stored, std::uint8_t{0});
    return size;
}

}  // namespace lsc
