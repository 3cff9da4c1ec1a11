// The stream that the benchmarks share: a calibrated sensor with a running monitor and 30 frames buffered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "platform/Metadata.h"
#include "platform/host/Host.h"

namespace bench {

using NSCam::Utils::SensorData;
using Samples = std::vector<SensorData>;

inline constexpr int kSensor = 0;
inline constexpr auto kHallType = static_cast<NSCam::Utils::eSensorType>(5);
inline constexpr unsigned int kMode = 0;
inline constexpr std::int64_t kFrameNs = 16'666'667;
inline constexpr int kBufferedFrames = 30;
// Short enough that the 100 samples of a query span exposure and readout at every rate.
inline constexpr std::uint64_t kExposureNs = 1'000'000;
inline constexpr std::uint32_t kReadoutNs = 2'500'000;

// Samples of frame `number`, evenly spread over it.
inline Samples samplesOf(std::int64_t number, std::int64_t perFrame) {
    Samples samples(static_cast<std::size_t>(perFrame));
    for (std::int64_t k = 0; k < perFrame; ++k) {
        SensorData& sample = samples[static_cast<std::size_t>(k)];
        sample.timestamp = number * kFrameNs + k * kFrameNs / perFrame;
        sample.oisX = static_cast<float>(k % 100);
        sample.oisY = -sample.oisX;
    }
    return samples;
}

// Start of a frame that is asked for two frames later.
inline std::int64_t askedSof(std::int64_t newest) {
    return (newest - 1) * kFrameNs;
}

inline host::Sensor calibratedSensor() {
    host::Sensor sensor;
    sensor.otpLayout = {0, 8, 0, 1, 2, 16, 4, 8, 1, 2, 1};
    sensor.otp = std::vector<std::uint8_t>(20, 1);
    sensor.rollingShutter = {{kMode, kReadoutNs}};
    return sensor;
}

// Hands over the samples of a frame.
inline void updateFrame(std::int64_t frame, std::int64_t perFrame, int sensor = kSensor,
                        NSCam::Utils::eSensorType type = kHallType) {
    host::deliverSamples(type, samplesOf(frame, perFrame));
    CustomShadingUtil::UpdateSensorData(sensor, static_cast<unsigned int>(frame), 1);
}

// A running monitor with 30 frames buffered; returns the number of the next frame.
inline std::int64_t startMonitor(std::int64_t perFrame, int sensor, NSCam::Utils::eSensorType type) {
    host::setSensor(sensor, calibratedSensor());
    CustomShadingUtil::UnRegisterSensorMonitor(sensor);
    CustomShadingUtil::RegisterAndStartSensorMonitor(sensor, static_cast<unsigned int>(type));
    CustomShadingUtil::StoreRollingShutter(sensor, kMode);
    for (std::int64_t frame = 1; frame <= kBufferedFrames; ++frame)
        updateFrame(frame, perFrame, sensor, type);
    return kBufferedFrames + 1;
}

// The same in a platform that holds nothing else.
inline std::int64_t startStream(std::int64_t perFrame) {
    host::reset();
    return startMonitor(perFrame, kSensor, kHallType);
}

inline NSCam::IMetadata metadataOf(std::int64_t sof) {
    auto block = std::make_shared<std::vector<std::uint8_t>>(4712);
    for (std::size_t i = 0; i < sizeof kExposureNs; ++i) {
        (*block)[4592 + i] = static_cast<std::uint8_t>(kExposureNs >> (8 * i));
    }
    NSCam::IMetadata metadata;
    host::setMetadataEntry(metadata, 0xC0030000, NSCam::IMetadata::Memory(block));
    host::setMetadataEntry(metadata, 0xC0010017, std::vector<std::int64_t>{sof});
    return metadata;
}

}  // namespace bench
