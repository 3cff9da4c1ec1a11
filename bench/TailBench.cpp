// What callers wait for: the times of single calls, and how far out the slowest lie. Two sensors run at 480 frames a
// second on threads of their own, their provider blocks, and 20 threads ask for positions of one sensor.
//
//   lsc_tail_bench [SECONDS]    for each scene; one line of JSON a row
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "bench/Stream.h"

namespace {

using namespace bench;
using Clock = std::chrono::steady_clock;
using Times = std::vector<Clock::duration>;

constexpr std::int64_t kPerFrame = 17;
constexpr auto kFrameTime = std::chrono::nanoseconds(1'000'000'000 / 480);
constexpr int kAskers = 20;

Clock::duration timeOf(const std::function<void()>& call) {
    const auto begin = Clock::now();
    call();
    return Clock::now() - begin;
}

void print(const char* scene, const char* call, Times times) {
    if (times.empty()) return;
    std::ranges::sort(times);
    const auto us = [&](double part) {
        const auto place = static_cast<std::size_t>(part * static_cast<double>(times.size() - 1));  // within
        return std::chrono::duration<double, std::micro>(times[place]).count();
    };
    std::printf("{\"scene\":\"%s\",\"call\":\"%s\",\"calls\":%zu,\"us\":[%.2f,%.2f,%.2f,%.2f]}\n", scene, call,
                times.size(), us(0.5), us(0.99), us(0.999), us(1.0));
}

void blockProvider(std::chrono::milliseconds time) {
    host::setHook([time](host::Operation operation) {
        if (operation == host::Operation::kGetAllSensorData) std::this_thread::sleep_for(time);
    });
}

// A sensor's stream as its camera's thread runs it, frame by frame at its rate.
class Camera {
public:
    explicit Camera(int sensor)
        : mSensor(sensor),
          mType(static_cast<NSCam::Utils::eSensorType>(5 + sensor)),
          mFrame(startMonitor(kPerFrame, sensor, mType)) {}

    void run(Clock::time_point end) {
        for (auto next = Clock::now(); next < end; next += kFrameTime) {
            std::this_thread::sleep_until(next);
            frame();
        }
    }

    Times updates;
    Times fills;

private:
    void frame() {
        host::deliverSamples(mType, samplesOf(mFrame, kPerFrame));
        NSCam::IMetadata metadata = metadataOf(askedSof(mFrame));
        const auto number = static_cast<unsigned int>(mFrame++);
        updates.push_back(timeOf([&] { CustomShadingUtil::UpdateSensorData(mSensor, number, 1); }));
        fills.push_back(timeOf([&] { CustomShadingUtil::fillLscOISCompInfo(mSensor, &metadata); }));
    }

    const int mSensor;
    const NSCam::Utils::eSensorType mType;
    std::int64_t mFrame;
};

void askAtRate(Clock::time_point end) {
    CalcOISValueInput input;
    input.sof_timestamp = static_cast<std::uint64_t>(askedSof(kBufferedFrames));
    input.exposure_time = kExposureNs;
    std::vector<double> x;
    std::vector<double> y;
    for (auto next = Clock::now(); next < end; next += kFrameTime) {
        std::this_thread::sleep_until(next);
        CustomShadingUtil::CalcOISValue(CustShadingType::kSingleExposure, input, &x, &y, 0, kSensor);
    }
}

void playAlone(Clock::duration length) {
    host::reset();
    Camera camera(0);
    camera.run(Clock::now() + length);
    print("one thread alone", "UpdateSensorData", camera.updates);
    print("one thread alone", "fillLscOISCompInfo", camera.fills);
}

void playTogether(Clock::duration length, int blockedMs, const char* scene) {
    host::reset();
    Camera first(0);
    Camera second(1);
    blockProvider(std::chrono::milliseconds(blockedMs));
    const auto end = Clock::now() + length;
    std::vector<std::thread> threads;
    for (Camera* const camera : {&first, &second})
        threads.emplace_back([camera, end] { camera->run(end); });
    for (int i = 0; i < kAskers; ++i)
        threads.emplace_back(askAtRate, end);
    for (std::thread& thread : threads)
        thread.join();
    host::setHook(nullptr);
    first.updates.insert(first.updates.end(), second.updates.begin(), second.updates.end());
    first.fills.insert(first.fills.end(), second.fills.begin(), second.fills.end());
    print(scene, "UpdateSensorData", first.updates);
    print(scene, "fillLscOISCompInfo", first.fills);
}

// One thread fetches 30 times a second from a provider that blocks; another asks every millisecond about a sensor of
// its own.
void waitForProvider(Clock::duration length, int blockedMs, const char* scene) {
    constexpr auto kFetchTime = std::chrono::microseconds(33'333);
    host::reset();
    Camera other(1);
    startMonitor(kPerFrame, 0, kHallType);
    blockProvider(std::chrono::milliseconds(blockedMs));
    const auto end = Clock::now() + length;
    std::thread fetcher([=] {
        std::int64_t frame = kBufferedFrames + 1;
        for (auto next = Clock::now(); next < end; next += kFetchTime) {
            std::this_thread::sleep_until(next);
            updateFrame(frame++, kPerFrame);
        }
    });
    Times waits;
    while (Clock::now() < end) {
        waits.push_back(timeOf([] { CustomShadingUtil::StoreRollingShutter(1, kMode); }));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    fetcher.join();
    host::setHook(nullptr);
    print(scene, "StoreRollingShutter", waits);
}

}  // namespace

int main(int argc, char** argv) {
    const auto length = std::chrono::seconds(argc > 1 ? std::max(1, std::atoi(argv[1])) : 10);
    playAlone(length);
    playTogether(length, 0, "two sensors, 20 askers");
    playTogether(length, 1, "the same, the provider blocks 1 ms");
    waitForProvider(length, 1, "another sensor's provider blocks 1 ms");
    waitForProvider(length, 30, "another sensor's provider blocks 30 ms");
}
