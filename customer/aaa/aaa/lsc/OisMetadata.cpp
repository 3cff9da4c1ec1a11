#include "customer/aaa/aaa/lsc/OisMetadata.h"

#include <cstddef>
#include <cstring>
#include <functional>

namespace lsc {
namespace {

using NSCam::IMetadata;

constexpr FrameExposure kSingleExposure[] = {
    {CustShadingType::kSingleExposure, LSC_OIS_VALUE_X_TAG, LSC_OIS_VALUE_Y_TAG},
};
constexpr FrameExposure kMultiExposure[] = {
    {CustShadingType::kMultiExposureNe, LSC_OIS_VALUE_NE_X_TAG, LSC_OIS_VALUE_NE_Y_TAG},
    {CustShadingType::kMultiExposureSe, LSC_OIS_VALUE_SE_X_TAG, LSC_OIS_VALUE_SE_Y_TAG},
};

// Bursts get the callback by reference: a std::function that holds it would take it to the heap.
template <typename Callback>
int burstRead(const IMetadata& metadata, const Callback& callback) {
    return metadata.burstRead(std::cref(callback));
}

bool hasValues(const IMetadata::BurstEntry& entry, std::uint32_t tag) {
    std::vector<double> values;
    // The status tells nothing that the values do not.
    static_cast<void>(entry.readEntries(tag, values));
    return !values.empty();
}

// The unsigned 64-bit value at `offset`, or 0 when it does not lie wholly inside the block.
std::uint64_t valueAt(const IMetadata::Memory& block, std::size_t offset) {
    std::uint64_t value = 0;
    if (block.array() == nullptr || block.size() < offset + sizeof value) return 0;
    std::memcpy(&value, block.array() + offset, sizeof value);
    return value;
}

int readExposureTimes(const IMetadata::BurstEntry& entry, CalcOISValueInput& timing) {
    IMetadata::Memory block;
    const int status = entry.readEntry(EXPOSURE_INFO_BLOCK_TAG, block, 0);
    if (status != 0) return status;
    timing.exposure_time = valueAt(block, kExposureOffset);
    timing.exposure_time_ne = timing.exposure_time;
    timing.exposure_time_se = valueAt(block, kSeExposureOffset);
    return 0;
}

int readStartOfFrame(const IMetadata::BurstEntry& entry, CalcOISValueInput& timing) {
    std::int64_t sof = 0;
    const int status = entry.readEntry(SOF_TIMESTAMP_TAG, sof, 0);
    // Entries are signed, times unsigned from here on.
    timing.sof_timestamp = static_cast<std::uint64_t>(sof);
    return status;
}

void readMultiExposureStarts(const IMetadata::BurstEntry& entry, CalcOISValueInput& timing) {
    std::vector<std::int64_t> pairs;
    if (entry.readEntries(MULTIEXP_SOF_TIMESTAMPS_TAG, pairs) != 0) return;
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        const auto sof = static_cast<std::uint64_t>(pairs[i + 1]);  // unsigned as above
        if (pairs[i] == kNeExposureKey) timing.sof_timestamp_ne = sof;
        if (pairs[i] == kSeExposureKey) timing.sof_timestamp_se = sof;
    }
}

}  // namespace

std::span<const FrameExposure> exposuresOf(bool multiExposure) {
    if (multiExposure) return kMultiExposure;
    return kSingleExposure;
}

bool readMultiExposure(const IMetadata& metadata) {
    std::int32_t flags = 0;
    burstRead(metadata, [&flags](const IMetadata::BurstEntry& entry) {
        return entry.readEntry(MULTIEXP_MODE_FLAGS_TAG, flags, 0);
    });
    return (flags & kMultiExposureFlags) != 0;
}

bool hasOisValues(const IMetadata& metadata, std::span<const FrameExposure> exposures) {
    bool complete = false;
    burstRead(metadata, [&](const IMetadata::BurstEntry& entry) {
        complete = true;
        for (const FrameExposure& exposure : exposures) {
            const bool x = hasValues(entry, exposure.xTag);
            const bool y = hasValues(entry, exposure.yTag);
            complete = complete && x && y;
        }
        return 0;
    });
    return complete;
}

int readFrameTiming(const IMetadata& metadata, CalcOISValueInput& timing) {
    timing = {};
    return burstRead(metadata, [&timing](const IMetadata::BurstEntry& entry) {
        const int exposureStatus = readExposureTimes(entry, timing);
        const int sofStatus = readStartOfFrame(entry, timing);
        readMultiExposureStarts(entry, timing);
        return exposureStatus | sofStatus;
    });
}

void writeOisValues(IMetadata& metadata, const FrameExposure& exposure, const std::vector<double>& x,
                    const std::vector<double>& y) {
    const auto write = [&](IMetadata::BurstEntry& entry) {
        entry.writeEntries(exposure.xTag, x.data(), x.size(), IMetadata::kNoWriteOptions);
        entry.writeEntries(exposure.yTag, y.data(), y.size(), IMetadata::kNoWriteOptions);
    };
    metadata.burstWrite(std::cref(write));
}

}  // namespace lsc
