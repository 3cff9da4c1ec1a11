#include "aaa/aaa/lsc/ShadingCustomUtil.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <mutex>
#include <new>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "platform/Metadata.h"

#define LSC_LOG_TAG "CustomShadingUtil"
#include "aaa/aaa/lsc/ShadingLog.h"

namespace {

using NSCam::IMetadata;

constexpr std::uint32_t COLOR_SENSOR_INFO_TAG = 0x90040159;  // float, 18 values
constexpr int kColorSensorValues = 18;
constexpr int kColorSensorMalformed = -1;  // status of a read that found another number of values

// Byte offsets in the records of ConvertColorSensorInfo.
constexpr std::size_t kSourceSingle = 68;
constexpr std::size_t kRunBytes = 60;
constexpr std::size_t kFirstBlock = 308;
constexpr std::size_t kSecondBlock = 592;
constexpr std::size_t kRunInBlock = 16;

// The addresses cross the interface as integers.
template <typename T>
T* at(long address) {
    return reinterpret_cast<T*>(address);
}

// A block holds the single value, the run of values from its byte 16, and the single value again behind the run. Bytes
// are moved, not values, since the records need not be aligned; and by way of copies, since they may overlap.
void copyColorSensorBlock(long source, long destination, std::size_t blockOffset) {
    if (source == 0 || destination == 0) return;
    std::byte run[kRunBytes];
    std::byte single[sizeof(float)];
    std::memcpy(run, at<const std::byte>(source), sizeof run);
    std::memcpy(single, at<const std::byte>(source) + kSourceSingle, sizeof single);

    std::byte* const block = at<std::byte>(destination) + blockOffset;
    std::memcpy(block, single, sizeof single);
    std::memcpy(block + kRunInBlock, run, sizeof run);
    std::memcpy(block + kRunInBlock + sizeof run, single, sizeof single);
}

// The customer object, created on the first call; null when there was no memory for it, and the next call tries again.
TarvoShadingCustomUtil* customerUtil() noexcept try {
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    if (TarvoShadingCustomUtil::mSingleInstance == nullptr) {
        TarvoShadingCustomUtil::mSingleInstance = new (std::nothrow) TarvoShadingCustomUtil();
    }
    return TarvoShadingCustomUtil::mSingleInstance;
} catch (...) {
    return nullptr;
}

}  // namespace

bool CustomShadingUtil::IsSupportFeature(unsigned int feature, int sensorId) noexcept {
    TarvoShadingCustomUtil* const util = customerUtil();
    return util != nullptr ? util->IsSupportFeature(feature, sensorId) : false;
}

bool CustomShadingUtil::IsEnableOisCompensation(int sensorId, unsigned int argument) noexcept {
    TarvoShadingCustomUtil* const util = customerUtil();
    return util != nullptr ? util->IsEnableOisCompensation(sensorId, argument) : false;
}

bool CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(int sensorId) noexcept {
    TarvoShadingCustomUtil* const util = customerUtil();
    return util != nullptr ? util->IsSupportSeamlessSwitchForRemosaic(sensorId) : false;
}

void CustomShadingUtil::GetMultiTableIndex(int& index, int sensorId) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->GetMultiTableIndex(index, sensorId);
}

void CustomShadingUtil::QueryOTPInfo(int* array, unsigned long length, int sensorId) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->QueryOTPInfo(array, length, sensorId);
}

bool CustomShadingUtil::RegisterAndStartSensorMonitor(int sensorId, unsigned int sensorType) noexcept {
    TarvoShadingCustomUtil* const util = customerUtil();
    return util != nullptr ? util->RegisterAndStartSensorMonitor(sensorId, sensorType) : false;
}

void CustomShadingUtil::StoreRollingShutter(int sensorId, unsigned int sensorMode) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->StoreRollingShutter(sensorId, sensorMode);
}

void CustomShadingUtil::UpdateSensorData(int sensorId, unsigned int frame, unsigned long timestamp) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->UpdateSensorData(sensorId, frame, timestamp);
}

void CustomShadingUtil::UnRegisterSensorMonitor(int sensorId) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->UnRegisterSensorMonitor(sensorId);
}

void CustomShadingUtil::CalcOISValue(CustShadingType type, const CalcOISValueInput& input, std::vector<double>* x,
                                     std::vector<double>* y, const unsigned int& frame, const int& sensorId) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->CalcOISValue(type, input, x, y, frame, sensorId);
}

void CustomShadingUtil::fillLscOISCompInfo(int sensorId, NSCam::IMetadata* metadata) noexcept {
    if (TarvoShadingCustomUtil* const util = customerUtil()) util->fillLscOISCompInfo(sensorId, metadata);
}

void CustomShadingUtil::ConvertColorSensorInfo(CustShadingType type, long source, long destination) noexcept {
    if (type == CustShadingType::kSingleExposure) {
        copyColorSensorBlock(source, destination, kFirstBlock);
    } else if (type == CustShadingType::kFrame) {
        copyColorSensorBlock(source, destination, kSecondBlock);
    } else {
        LSC_LOG_ERROR("Unknown type %d", lsc::log::dec(type));
    }
}

void CustomShadingUtil::QueryMetaInfo(CustShadingType type, long metadata, float (&array)[18]) noexcept try {
    if (type != CustShadingType::kColorSensorInfo) {
        LSC_LOG_ERROR("Unknown type %d", lsc::log::dec(type));
        return;
    }
    if (metadata == 0) return;
    const auto read = [&array](const IMetadata::BurstEntry& entry) {
        std::vector<float> values;
        const int status = entry.readEntries(COLOR_SENSOR_INFO_TAG, values);
        if (status != 0) return status;
        if (values.size() != kColorSensorValues) {
            LSC_LOG_ASSERT("Size mismatch: color sensor info (real:%zu expect:%d", values.size(), kColorSensorValues);
            return kColorSensorMalformed;
        }
        std::copy(values.begin(), values.end(), std::begin(array));
        return 0;
    };
    at<const IMetadata>(metadata)->burstRead(std::cref(read));
} catch (...) {
    return;
}

void CustomShadingUtil::UpdateMetaInfo(CustShadingType type, long metadata, const float (&array)[18]) noexcept try {
    if (type != CustShadingType::kColorSensorInfo) {
        LSC_LOG_ERROR("Unknown type %d", lsc::log::dec(type));
        return;
    }
    if (metadata == 0) return;
    const auto write = [&array](IMetadata::BurstEntry& entry) {
        entry.writeEntries(COLOR_SENSOR_INFO_TAG, array, std::size(array), IMetadata::kNoWriteOptions);
    };
    at<IMetadata>(metadata)->burstWrite(std::cref(write));
} catch (...) {
    return;
}
