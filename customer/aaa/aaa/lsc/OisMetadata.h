// What OIS compensation reads from a frame's metadata and writes into it. Each function is one burst. Bursts may throw.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "platform/Metadata.h"

namespace lsc {

// Tags of the platform's frame metadata.
inline constexpr std::uint32_t MULTIEXP_MODE_FLAGS_TAG = 0xC00A0002;      // int32, at index 0
inline constexpr std::uint32_t SOF_TIMESTAMP_TAG = 0xC0010017;            // int64 (ns), at index 0
inline constexpr std::uint32_t MULTIEXP_SOF_TIMESTAMPS_TAG = 0xC00A0006;  // int64, (key, ns) pairs
inline constexpr std::uint32_t EXPOSURE_INFO_BLOCK_TAG = 0xC0030000;      // memory block
inline constexpr std::uint32_t LSC_OIS_VALUE_X_TAG = 0xC0030033;          // double {position, 0.0}; so are those below
inline constexpr std::uint32_t LSC_OIS_VALUE_Y_TAG = 0xC0030034;
inline constexpr std::uint32_t LSC_OIS_VALUE_NE_X_TAG = 0xC0030035;
inline constexpr std::uint32_t LSC_OIS_VALUE_NE_Y_TAG = 0xC0030036;
inline constexpr std::uint32_t LSC_OIS_VALUE_SE_X_TAG = 0xC0030037;
inline constexpr std::uint32_t LSC_OIS_VALUE_SE_Y_TAG = 0xC0030038;

inline constexpr std::int32_t kMultiExposureFlags = 0x618;  // of MULTIEXP_MODE_FLAGS_TAG; any of them marks the frame

// Keys of the pairs under MULTIEXP_SOF_TIMESTAMPS_TAG.
inline constexpr std::int64_t kNeExposureKey = 4;
inline constexpr std::int64_t kSeExposureKey = 6;

// Byte offsets in the exposure block: exposure times in ns, unsigned 64-bit, little-endian as the platform is.
inline constexpr std::size_t kExposureOffset = 4592;
inline constexpr std::size_t kSeExposureOffset = 4704;
inline constexpr std::size_t kExposureBlockSize = 4712;  // bytes that the platform's block has at least

// One exposure of a frame: the work it asks for and where its position goes.
struct FrameExposure {
    CustShadingType type;
    std::uint32_t xTag;
    std::uint32_t yTag;
};
// The exposures of a single- or a multi-exposure frame, in the order in which they are computed.
std::span<const FrameExposure> exposuresOf(bool multiExposure);

// Whether the frame's exposure-mode flags mark a multi-exposure frame; without the entry it is none.
bool readMultiExposure(const NSCam::IMetadata& metadata);

// Whether the metadata holds values under both tags of every exposure.
bool hasOisValues(const NSCam::IMetadata& metadata, std::span<const FrameExposure> exposures);

// Reads the frame's timing; values that are missing are 0. Returns 0 when the exposure block and the start of frame
// were read, otherwise the status of these reads, combined by bitwise or.
int readFrameTiming(const NSCam::IMetadata& metadata, CalcOISValueInput& timing);

// Writes the position of one exposure: x under its tag, then y under its own, each with all its values.
void writeOisValues(NSCam::IMetadata& metadata, const FrameExposure& exposure, const std::vector<double>& x,
                    const std::vector<double>& y);

}  // namespace lsc
