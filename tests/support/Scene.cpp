#include "tests/support/Scene.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "customer/aaa/aaa/lsc/OisMetadata.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"

namespace test {
namespace {

constexpr std::uint32_t kFlagsTag = 0xC00A0002;
constexpr std::uint32_t kSofTag = 0xC0010017;
constexpr std::uint32_t kPairsTag = 0xC00A0006;
constexpr std::uint32_t kBlockTag = 0xC0030000;

NSCam::IMetadata::Memory exposureBlock(std::uint64_t exposureNs, std::uint64_t seExposureNs) {
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(lsc::kExposureBlockSize);
    std::memcpy(bytes->data() + lsc::kExposureOffset, &exposureNs, sizeof exposureNs);
    std::memcpy(bytes->data() + lsc::kSeExposureOffset, &seExposureNs, sizeof seExposureNs);
    return NSCam::IMetadata::Memory(std::move(bytes));
}

}  // namespace

TarvoShadingCustomUtil* customerObject() {
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    return TarvoShadingCustomUtil::mSingleInstance;
}

void dropCustomerObject() {
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    delete std::exchange(TarvoShadingCustomUtil::mSingleInstance, nullptr);
}

NSCam::Utils::SensorData sample(std::int64_t timestamp, float x, float y) {
    NSCam::Utils::SensorData data = {};
    data.timestamp = timestamp;
    data.oisX = x;
    data.oisY = y;
    return data;
}

std::vector<NSCam::Utils::SensorData> millisecondSamples(std::int64_t first, int count) {
    std::vector<NSCam::Utils::SensorData> samples;
    for (int k = 0; k < count; ++k) {
        samples.push_back(sample(first + k * kMs, static_cast<float>(k), static_cast<float>(-2 * k)));
    }
    return samples;
}

std::vector<std::int64_t> stamps(const std::vector<NSCam::Utils::SensorData>& samples) {
    std::vector<std::int64_t> times;
    for (const auto& data : samples)
        times.push_back(data.timestamp);
    return times;
}

host::Sensor calibratedSensor(std::uint32_t rows) {
    constexpr std::uint32_t kEntries = 5;
    constexpr std::uint32_t kTable = 16;
    const std::uint32_t size = 2 * rows * kEntries;
    host::Sensor sensor;
    sensor.otpLayout = {0, 8, 0, 1, 2, kTable, size, 8, rows, kEntries, 1};
    std::vector<std::uint8_t> otp = {1, 6, 0, 0, 0, 0, 0, 0, 1};
    otp.resize(kTable);
    for (std::uint32_t i = 0; i < size; ++i)
        otp.push_back(static_cast<std::uint8_t>(i));
    sensor.otp = otp;
    sensor.rollingShutter = {{kMode, kReadoutNs}};
    return sensor;
}

NSCam::IMetadata singleFrame(std::int64_t sofNs, std::uint64_t exposureNs) {
    NSCam::IMetadata metadata;
    host::setMetadataEntry(metadata, kSofTag, std::vector<std::int64_t>{sofNs});
    host::setMetadataEntry(metadata, kBlockTag, exposureBlock(exposureNs, 0));
    return metadata;
}

NSCam::IMetadata multiFrame(std::int64_t neSofNs, std::int64_t seSofNs, std::uint64_t exposureNs,
                            std::uint64_t seExposureNs) {
    NSCam::IMetadata metadata = singleFrame(neSofNs, exposureNs);
    host::setMetadataEntry(metadata, kFlagsTag, std::vector<std::int32_t>{0x10});
    host::setMetadataEntry(metadata, kPairsTag, std::vector<std::int64_t>{6, seSofNs, 4, neSofNs});
    host::setMetadataEntry(metadata, kBlockTag, exposureBlock(exposureNs, seExposureNs));
    return metadata;
}

void startWith(const std::vector<NSCam::Utils::SensorData>& samples) {
    CustomShadingUtil::RegisterAndStartSensorMonitor(kSensor, kHallType);
    CustomShadingUtil::StoreRollingShutter(kSensor, kMode);
    host::deliverSamples(static_cast<NSCam::Utils::eSensorType>(kHallType), samples);
    CustomShadingUtil::UpdateSensorData(kSensor, 1, 0);
}

}  // namespace test
