// How a query's cost grows with the monitors registered, and an update's with its samples.
#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

#include "bench/Stream.h"

namespace {

using namespace bench;

constexpr std::int64_t kPerFrame = 34;

// Monitors beside the one that is asked, registered for as long as this lives. They need no camera module.
class IdleMonitors {
public:
    explicit IdleMonitors(std::int64_t count) : mEnd(kFirst + static_cast<int>(count)) {
        for (int sensor = kFirst; sensor < mEnd; ++sensor)
            CustomShadingUtil::RegisterAndStartSensorMonitor(sensor, 6);
    }
    ~IdleMonitors() {
        for (int sensor = kFirst; sensor < mEnd; ++sensor)
            CustomShadingUtil::UnRegisterSensorMonitor(sensor);
    }
    IdleMonitors(const IdleMonitors&) = delete;
    IdleMonitors& operator=(const IdleMonitors&) = delete;

private:
    static constexpr int kFirst = 100;

    const int mEnd;
};

void Query_Monitors(benchmark::State& state) {
    const std::int64_t next = startStream(kPerFrame);
    const IdleMonitors others(state.range(0) - 1);
    CalcOISValueInput input;
    input.sof_timestamp = static_cast<std::uint64_t>(askedSof(next - 1));
    input.exposure_time = kExposureNs;
    std::vector<double> x;
    std::vector<double> y;
    for (auto _ : state)
        CustomShadingUtil::CalcOISValue(CustShadingType::kSingleExposure, input, &x, &y, 0, kSensor);
    if (x.size() != 2) state.SkipWithError("no position");
}
BENCHMARK(Query_Monitors)->RangeMultiplier(10)->Range(1, 1000);

void Update_Samples(benchmark::State& state) {
    std::int64_t frame = startStream(state.range(0));
    for (auto _ : state) {
        host::deliverSamples(kHallType, samplesOf(frame, state.range(0)));
        const auto begin = std::chrono::steady_clock::now();
        CustomShadingUtil::UpdateSensorData(kSensor, static_cast<unsigned int>(frame), 1);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        ++frame;
    }
}
BENCHMARK(Update_Samples)->RangeMultiplier(10)->Range(1, 10'000)->UseManualTime();

}  // namespace
