// What the frame road costs at 17, 34 and 267 samples a frame (1, 2 and 16 kHz at 60 frames a second) with 30 frames
// buffered and logging off, beside a plain search that copies every buffered sample, scans, and copies 100.
#include <benchmark/benchmark.h>

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "platform/Metadata.h"
#include "platform/host/Host.h"

namespace {

using NSCam::Utils::SensorData;
using Samples = std::vector<SensorData>;

constexpr int kSensor = 0;
constexpr auto kHallType = static_cast<NSCam::Utils::eSensorType>(5);
constexpr unsigned int kMode = 0;
constexpr std::int64_t kFrameNs = 16'666'667;
constexpr int kBufferedFrames = 30;
// Short enough that the 100 samples of a query span exposure and readout at every rate.
constexpr std::uint64_t kExposureNs = 1'000'000;
constexpr std::uint32_t kReadoutNs = 2'500'000;

// Samples of frame `number`, evenly spread over it.
Samples samplesOf(std::int64_t number, std::int64_t perFrame) {
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
std::int64_t askedSof(std::int64_t newest) {
    return (newest - 1) * kFrameNs;
}

host::Sensor calibratedSensor() {
    host::Sensor sensor;
    sensor.otpLayout = {0, 8, 0, 1, 2, 16, 4, 8, 1, 2, 1};
    sensor.otp = std::vector<std::uint8_t>(20, 1);
    sensor.rollingShutter = {{kMode, kReadoutNs}};
    return sensor;
}

// A running monitor with 30 frames buffered; returns the number of the next frame.
std::int64_t startStream(std::int64_t perFrame) {
    host::reset();
    host::setSensor(kSensor, calibratedSensor());
    CustomShadingUtil::UnRegisterSensorMonitor(kSensor);
    CustomShadingUtil::RegisterAndStartSensorMonitor(kSensor, static_cast<unsigned int>(kHallType));
    CustomShadingUtil::StoreRollingShutter(kSensor, kMode);
    std::int64_t frame = 1;
    for (; frame <= kBufferedFrames; ++frame) {
        host::deliverSamples(kHallType, samplesOf(frame, perFrame));
        CustomShadingUtil::UpdateSensorData(kSensor, static_cast<unsigned int>(frame), 1);
    }
    return frame;
}

NSCam::IMetadata metadataOf(std::int64_t sof) {
    auto block = std::make_shared<std::vector<std::uint8_t>>(4712);
    for (std::size_t i = 0; i < sizeof kExposureNs; ++i) {
        (*block)[4592 + i] = static_cast<std::uint8_t>(kExposureNs >> (8 * i));
    }
    NSCam::IMetadata metadata;
    host::setMetadataEntry(metadata, 0xC0030000, NSCam::IMetadata::Memory(block));
    host::setMetadataEntry(metadata, 0xC0010017, std::vector<std::int64_t>{sof});
    return metadata;
}

void Frame_UpdateAndFill(benchmark::State& state) {
    std::int64_t frame = startStream(state.range(0));
    std::size_t served = 0;
    for (auto _ : state) {
        host::deliverSamples(kHallType, samplesOf(frame, state.range(0)));
        NSCam::IMetadata metadata = metadataOf(askedSof(frame));
        const auto begin = std::chrono::steady_clock::now();
        CustomShadingUtil::UpdateSensorData(kSensor, static_cast<unsigned int>(frame), 1);
        CustomShadingUtil::fillLscOISCompInfo(kSensor, &metadata);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        served += host::metadataEntries(metadata).size() == 4;
        ++frame;
    }
    if (served != static_cast<std::size_t>(state.iterations())) state.SkipWithError("a frame was not served");
}
BENCHMARK(Frame_UpdateAndFill)->Arg(17)->Arg(34)->Arg(267)->UseManualTime();

void Query_WithCalculation(benchmark::State& state) {
    const std::int64_t next = startStream(state.range(0));
    CalcOISValueInput input;
    input.sof_timestamp = static_cast<std::uint64_t>(askedSof(next - 1));
    input.exposure_time = kExposureNs;
    std::vector<double> x;
    std::vector<double> y;
    for (auto _ : state) {
        CustomShadingUtil::CalcOISValue(CustShadingType::kSingleExposure, input, &x, &y, 0, kSensor);
        benchmark::DoNotOptimize(x.data());
    }
    if (x.size() != 2) state.SkipWithError("no position");
}
BENCHMARK(Query_WithCalculation)->Arg(17)->Arg(34)->Arg(267);

// The search alone, without lock or calculation.
Samples plainSearch(const std::deque<Samples>& queue, std::uint64_t time) {
    Samples all;
    for (const Samples& samples : queue)
        all.insert(all.end(), samples.begin(), samples.end());
    std::size_t i = 0;
    while (i < all.size() && static_cast<std::uint64_t>(all[i].timestamp) < time)
        ++i;
    if (i == all.size() || all.size() < 100) return {};
    std::size_t begin = 0;
    if (i >= 50) begin = i + 50 >= all.size() ? all.size() - 100 : i - 50;
    return {all.data() + begin, all.data() + begin + 100};
}

void Query_PlainSearchBaseline(benchmark::State& state) {
    std::deque<Samples> queue;
    for (std::int64_t frame = 1; frame <= kBufferedFrames; ++frame)
        queue.push_back(samplesOf(frame, state.range(0)));
    const auto time = static_cast<std::uint64_t>(askedSof(kBufferedFrames));
    for (auto _ : state) {
        Samples found = plainSearch(queue, time);
        benchmark::DoNotOptimize(found.data());
    }
}
BENCHMARK(Query_PlainSearchBaseline)->Arg(17)->Arg(34)->Arg(267);

void Facade_Call(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(CustomShadingUtil::IsSupportFeature(1, kSensor));
}
BENCHMARK(Facade_Call);

}  // namespace
