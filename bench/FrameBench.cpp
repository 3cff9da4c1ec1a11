// What a frame costs at 17, 34 and 267 samples a frame (1, 2 and 16 kHz at 60 frames a second) with 30 frames
// buffered and logging off. A query with its calculation is compared with two baselines that give the same position:
// the plain way, which copies every buffered sample, scans, and copies 100; and a floor, the least work that can be
// done.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <vector>

#include "bench/Stream.h"

namespace {

using namespace bench;

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

// The buffer of both baselines: what the monitor of startStream() holds, one frame after the other.
std::deque<Samples> bufferedFrames(std::int64_t perFrame) {
    std::deque<Samples> queue;
    for (std::int64_t frame = 1; frame <= kBufferedFrames; ++frame)
        queue.push_back(samplesOf(frame, perFrame));
    return queue;
}

struct Position {
    float x = 0;
    float y = 0;
};

// The table, the span search and the mean over `count` samples from `sample(k)` on, with the library's arithmetic and
// as plain as can be.
template <typename Sample>
Position meanOfSpan(std::size_t count, const Sample& sample) {
    constexpr std::int64_t kWindowUs = 1000;
    const auto exposed = static_cast<float>(std::min<std::uint64_t>(kExposureNs, kReadoutNs) / 1000);
    const std::int64_t offset = static_cast<std::int64_t>(exposed * -0.5432F) - 166;
    struct Entry {
        float x, y;
        std::int64_t time;
    };
    std::array<Entry, 100> table;
    std::size_t size = 0;
    std::int64_t previous = 0;
    for (std::size_t k = 0; k < count; ++k) {
        const SensorData& data = sample(k);
        const std::int64_t time = data.timestamp / 1000;
        if (time == previous) continue;
        table[size++] = {data.oisX, data.oisY, time - offset};
        previous = time;
    }
    // The first entry in the window of `time`, or the one after it if that is nearer; the last one without any.
    const auto match = [&](std::size_t first, std::int64_t time) {
        const auto distance = [&](std::size_t k) { return std::abs(time - table[k].time); };
        while (first + 1 < size && distance(first) >= kWindowUs)
            ++first;
        return first + 1 < size && distance(first) > distance(first + 1) ? first + 1 : first;
    };
    const std::size_t start = match(0, askedSof(kBufferedFrames) / 1000 - std::int64_t{kExposureNs} / 1000);
    const std::size_t end = match(start, table[start].time + kReadoutNs / 1000);
    Position sum;
    for (std::size_t k = start; k <= end; ++k) {
        sum.x += table[k].x;
        sum.y += table[k].y;
    }
    const auto entries = static_cast<float>(end - start + 1);
    return {sum.x / entries, sum.y / entries};
}

// The way a first version would take: every buffered sample is copied, the copy scanned, 100 samples copied out.
Position plainQuery(const std::deque<Samples>& queue, std::mutex& mutex) {
    Samples found;
    {
        const std::lock_guard lock(mutex);
        Samples all;
        for (const Samples& samples : queue)
            all.insert(all.end(), samples.begin(), samples.end());
        std::size_t i = 0;
        while (i < all.size() && all[i].timestamp < askedSof(kBufferedFrames))
            ++i;
        if (i == all.size() || all.size() < 100) return {};
        std::size_t begin = 0;
        if (i >= 50) begin = i + 50 >= all.size() ? all.size() - 100 : i - 50;
        found.assign(all.data() + begin, all.data() + begin + 100);
    }
    return meanOfSpan(found.size(), [&](std::size_t k) -> const SensorData& { return found[k]; });
}

// The least work that gives the same answer: one lock, a binary search, the 100 samples read in place.
Position floorQuery(const std::deque<Samples>& queue, std::mutex& mutex) {
    const std::lock_guard lock(mutex);
    const std::int64_t time = askedSof(kBufferedFrames);
    const auto frame = std::partition_point(queue.begin(), queue.end(),
                                            [time](const Samples& samples) { return samples.back().timestamp < time; });
    if (frame == queue.end()) return {};
    const auto found = std::partition_point(frame->begin(), frame->end(),
                                            [time](const SensorData& sample) { return sample.timestamp < time; });
    // 50 samples back, a frame at a time.
    auto first = frame;
    std::ptrdiff_t at = found - frame->begin() - 50;
    while (at < 0 && first != queue.begin())
        at += static_cast<std::ptrdiff_t>((--first)->size());
    std::array<const SensorData*, 100> window;
    std::size_t count = 0;
    for (; count < window.size() && first != queue.end(); ++first, at = 0) {
        for (std::size_t k = static_cast<std::size_t>(at); k < first->size() && count < window.size(); ++k)
            window[count++] = &(*first)[k];
    }
    return meanOfSpan(count, [&](std::size_t k) -> const SensorData& { return *window[k]; });
}

template <Position (*kQuery)(const std::deque<Samples>&, std::mutex&)>
void Query_Baseline(benchmark::State& state) {
    const std::deque<Samples> queue = bufferedFrames(state.range(0));
    std::mutex mutex;
    // The same answer as the library's, or the comparison means nothing.
    startStream(state.range(0));
    CalcOISValueInput input;
    input.sof_timestamp = static_cast<std::uint64_t>(askedSof(kBufferedFrames));
    input.exposure_time = kExposureNs;
    std::vector<double> x;
    std::vector<double> y;
    CustomShadingUtil::CalcOISValue(CustShadingType::kSingleExposure, input, &x, &y, 0, kSensor);
    const Position answer = kQuery(queue, mutex);
    if (x.empty() || static_cast<double>(answer.x) != x[0] || static_cast<double>(answer.y) != y[0]) {
        state.SkipWithError("another position than the library's");
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(kQuery(queue, mutex));
}
BENCHMARK(Query_Baseline<floorQuery>)->Name("Query_Floor")->Arg(17)->Arg(34)->Arg(267);
BENCHMARK(Query_Baseline<plainQuery>)->Name("Query_Plain")->Arg(17)->Arg(34)->Arg(267);

void Facade_Call(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(CustomShadingUtil::IsSupportFeature(1, kSensor));
}
BENCHMARK(Facade_Call);

}  // namespace
