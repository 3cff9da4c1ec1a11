// A camera in a test: one sensor with OTP calibration, hall samples and frames.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/Metadata.h"
#include "platform/SensorProvider.h"
#include "platform/host/Host.h"

class TarvoShadingCustomUtil;

namespace test {

// The object behind the facade, or null before the first call; and a way to begin without one.
TarvoShadingCustomUtil* customerObject();
void dropCustomerObject();

// Fixture base: the host platform is in its initial state before the members of the fixture and after the test.
class HostTest : public testing::Test {
protected:
    HostTest() { host::reset(); }
    ~HostTest() override { host::reset(); }
};

inline constexpr int kSensor = 1;
inline constexpr unsigned int kHallType = 5;
inline constexpr unsigned int kMode = 2;
inline constexpr std::uint32_t kReadoutNs = 10'000'000;
inline constexpr std::int64_t kMs = 1'000'000;

// A sample at `timestamp` (ns) at lens position (x, y).
NSCam::Utils::SensorData sample(std::int64_t timestamp, float x = 0, float y = 0);

// `count` samples from `first` (ns) on, one a millisecond; the k-th at lens position (k, -2k).
std::vector<NSCam::Utils::SensorData> millisecondSamples(std::int64_t first, int count);

std::vector<std::int64_t> stamps(const std::vector<NSCam::Utils::SensorData>& samples);

// A module with valid golden block (gradient 6: table 2) and an OIS calibration table of `rows` rows of 5 entries.
host::Sensor calibratedSensor(std::uint32_t rows = 2);

// Metadata of a single-exposure frame.
NSCam::IMetadata singleFrame(std::int64_t sofNs, std::uint64_t exposureNs);

// Metadata of a multi-exposure frame.
NSCam::IMetadata multiFrame(std::int64_t neSofNs, std::int64_t seSofNs, std::uint64_t exposureNs,
                            std::uint64_t seExposureNs);

// Values of an entry; none when it is not there or of another type.
template <typename T>
std::vector<T> entry(const NSCam::IMetadata& metadata, std::uint32_t tag) {
    const auto entries = host::metadataEntries(metadata);
    const auto found = entries.find(tag);
    const auto* const values = found == entries.end() ? nullptr : std::get_if<std::vector<T>>(&found->second);
    return values != nullptr ? *values : std::vector<T>();
}

// Through the facade: registers kSensor, stores its rolling shutter, and files `samples` under frame 1.
void startWith(const std::vector<NSCam::Utils::SensorData>& samples);

}  // namespace test
