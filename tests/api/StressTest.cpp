// Many threads at once, on shared and on different sensors. The thread sanitizer watches in its preset; here the test
// ends in time, and nearly every frame gets the position that the same samples give alone.
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"
#include "tests/support/Threads.h"

namespace {

using namespace std::chrono_literals;
using test::kMs;

constexpr int kSensors = 3;
constexpr int kAlone = 9;  // the sensor that is asked before there are threads

// A round hands over one batch and asks for one frame, whose exposure lies in the middle of the batch two rounds
// before.
constexpr unsigned int kRounds = 200;
constexpr unsigned int kRestartRound = 100;  // the monitor is stopped and started again
constexpr unsigned int kAskers = 2;
constexpr unsigned int kLead = 4;  // rounds that a thread is ahead of one that it works with
constexpr std::int64_t kBatchMs = 40;

NSCam::Utils::eSensorType typeOf(int sensor) {
    return static_cast<NSCam::Utils::eSensorType>(sensor + 5);
}

void start(int sensor) {
    CustomShadingUtil::RegisterAndStartSensorMonitor(sensor, static_cast<unsigned int>(sensor) + 5);
    CustomShadingUtil::StoreRollingShutter(sensor, test::kMode);
}

// A batch begins with samples that the one before it ended with.
void feed(int sensor, unsigned int round) {
    std::vector<NSCam::Utils::SensorData> samples;
    for (std::int64_t ms = round * kBatchMs - 3; ms < (round + 1) * kBatchMs; ++ms) {
        const auto x = static_cast<float>(ms * ms % 1009);
        samples.push_back(test::sample(ms * kMs, x, -2 * x));
    }
    host::deliverSamples(typeOf(sensor), samples);
    CustomShadingUtil::UpdateSensorData(sensor, round, static_cast<unsigned long>(round * kBatchMs * kMs));
}

// x and y of both exposures; none of those without a position.
using Positions = std::vector<std::vector<double>>;

Positions askFrame(int sensor, unsigned int round) {
    const std::int64_t sof = (round * kBatchMs + 30) * kMs;
    NSCam::IMetadata frame = test::multiFrame(sof, sof + 1 * kMs, 10 * kMs, 8 * kMs);
    CustomShadingUtil::fillLscOISCompInfo(sensor, &frame);
    Positions positions;
    for (const std::uint32_t tag : {0xC0030035U, 0xC0030036U, 0xC0030037U, 0xC0030038U})
        positions.push_back(test::entry<double>(frame, tag));
    return positions;
}

bool isServed(const Positions& positions) {
    return std::ranges::none_of(positions, [](const auto& values) { return values.empty(); });
}

// What one sensor's threads tell each other.
struct Progress {
    std::atomic<unsigned int> fed = 0;
    std::atomic<unsigned int> asked[kAskers] = {};
    std::atomic<unsigned int> served = 0;
    std::atomic<bool> restarted = false;
};

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition())
        std::this_thread::sleep_for(50us);
}

class Stress : public test::HostTest {
protected:
    Stress() {
        host::setProperty("vendor.tarvo.3a.lscutil.log", 4);
        host::setCameraMode("high_pixel_mode");
        host::setLogSink([](const host::LogEntry&) {});
        for (const int sensor : {0, 1, 2, kAlone})
            host::setSensor(sensor, test::calibratedSensor());
    }

    // What each round's frame gets from the same samples when nobody else calls.
    static std::vector<Positions> positionsAlone() {
        std::vector<Positions> alone(kRounds);
        start(kAlone);
        for (unsigned int round = 1; round < kRounds; ++round) {
            feed(kAlone, round);
            if (round > 2) alone[round - 2] = askFrame(kAlone, round - 2);
        }
        CustomShadingUtil::UnRegisterSensorMonitor(kAlone);
        return alone;
    }

    void feedAll(int sensor) {
        Progress& its = mProgress[sensor];
        for (unsigned int round = 1; round < kRounds; ++round) {
            waitUntil([&] {
                return std::ranges::all_of(its.asked, [&](const auto& asked) { return asked + 2 + kLead >= round; }) &&
                       (round < kRestartRound + kLead || its.restarted);
            });
            feed(sensor, round);
            its.fed = round;
        }
    }

    void askAlong(int sensor, unsigned int asker) {
        Progress& its = mProgress[sensor];
        for (unsigned int round = 1; round + 2 < kRounds; ++round) {
            waitUntil([&] { return its.fed >= round + 2; });
            const Positions positions = askFrame(sensor, round);
            if (isServed(positions)) {
                EXPECT_EQ(positions, mAlone[round]) << "sensor " << sensor << ", round " << round;
                ++its.served;
            }
            its.asked[asker] = round;
        }
    }

    void restart(int sensor) {
        Progress& its = mProgress[sensor];
        waitUntil([&] { return its.fed >= kRestartRound; });
        CustomShadingUtil::UnRegisterSensorMonitor(sensor);
        start(sensor);
        its.restarted = true;
    }

    // Runs `work` with a growing number until the sensors' threads are done.
    template <typename Work>
    std::future<void> repeat(Work work) {
        return std::async(std::launch::async, [this, work] {
            for (unsigned int round = 1; !mOver.load(std::memory_order_relaxed); ++round)
                work(round);
        });
    }

    std::vector<Positions> mAlone;
    Progress mProgress[kSensors];
    std::atomic<bool> mOver = false;
};

void askHooks(CustomShadingFlow& hooks) {
    custom_shading_init_info init = {};
    custom_shading_config_info config = {};
    custom_shading_setParam_info param = {};
    custom_shading_calc_info calculation = {};
    custom_shading_result_info result = {};
    custom_shading_uninit_info uninit = {};
    SHADING_DEBUG_INFO_S debug;
    std::vector<unsigned int> table = {1};
    hooks.init(init);
    hooks.config(config);
    hooks.setParam(param);
    hooks.calculate(calculation, table);
    hooks.getResult(result);
    hooks.setCustomShadingDebugInfo(debug);
    hooks.uninit(uninit);
}

void askAll(int sensor, unsigned int round) {
    int index = 0;
    int table[8];
    float floats[18] = {};
    NSCam::IMetadata metadata;
    std::vector<double> x;
    std::vector<double> y;
    CalcOISValueInput input = {50 * kMs, 0, 0, 5 * kMs, 0, 0};
    unsigned char record[700] = {};
    unsigned int mode = test::kMode;
    TarvoShadingCustomUtil& util = *test::customerObject();
    CustomShadingUtil::IsSupportFeature(2, sensor);
    CustomShadingUtil::IsEnableOisCompensation(sensor, round);
    CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(sensor);
    CustomShadingUtil::GetMultiTableIndex(index, sensor);
    CustomShadingUtil::QueryOTPInfo(table, std::size(table), sensor);
    CustomShadingUtil::UpdateMetaInfo(CustShadingType::kColorSensorInfo, reinterpret_cast<long>(&metadata), floats);
    CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, reinterpret_cast<long>(&metadata), floats);
    CustomShadingUtil::ConvertColorSensorInfo(CustShadingType::kFrame, reinterpret_cast<long>(floats),
                                              reinterpret_cast<long>(record));
    CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, input, &x, &y, round, sensor);
    askHooks(*CustomShadingFlow::getInstance(static_cast<int>(round)));
    util.QuerySensorInfo(sensor, 0x400F, reinterpret_cast<unsigned long>(&index), 0,
                         reinterpret_cast<unsigned long>(&mode));
    util.SwapOTPInfo(record, record + 100, sensor);
    util.fillLscCalcOISValueInputInfo(&metadata, input);
    util.IsEnabled(sensor);
    util.QueryRollingShutter(sensor);
    util.RegisterSensorMonitor(sensor, static_cast<unsigned int>(sensor) + 5);
    util.StartSensorMonitor(sensor);
    std::vector<NSCam::Utils::SensorData> samples;
    util.QuerySensorData(samples, sensor, round, 0);
}

TEST_F(Stress, FramesGetTheirPositionsWhateverOtherThreadsCall) {
    mAlone = positionsAlone();
    const auto inReach = static_cast<unsigned int>(std::ranges::count_if(mAlone, isServed));
    ASSERT_GE(inReach, kRounds - 10);

    std::vector<std::future<void>> others;
    for (unsigned int i = 0; i < 2; ++i)
        others.push_back(
            repeat([i](unsigned int round) { askAll(static_cast<int>((round + i) % kSensors), round % 20); }));
    others.push_back(repeat([](unsigned int round) {
        start(kAlone + static_cast<int>(round % 2));
        CustomShadingUtil::UnRegisterSensorMonitor(kAlone);
        host::setLogSwitches(static_cast<std::int32_t>(round % 4), test::kAllDetails, test::kAllModules);
    }));
    std::vector<std::future<void>> threads;
    for (int sensor = 0; sensor < kSensors; ++sensor) {
        start(sensor);
        threads.push_back(std::async(std::launch::async, [=, this] { feedAll(sensor); }));
        threads.push_back(std::async(std::launch::async, [=, this] { restart(sensor); }));
        for (unsigned int asker = 0; asker < kAskers; ++asker)
            threads.push_back(std::async(std::launch::async, [=, this] { askAlong(sensor, asker); }));
    }
    threads.clear();  // ends when they do
    mOver = true;
    others.clear();
    for (int sensor = 0; sensor < kSensors; ++sensor) {
        EXPECT_GE(mProgress[sensor].served * 10, inReach * kAskers * 9) << "sensor " << sensor;
        CustomShadingUtil::UnRegisterSensorMonitor(sensor);
    }
}

TEST_F(Stress, ASlowProviderDelaysOthersButHoldsNobodyForEver) {
    CustomShadingUtil::RegisterAndStartSensorMonitor(0, 5);
    std::promise<void> fetching;
    std::promise<void> release;
    host::setHook([&, gate = release.get_future().share()](host::Operation operation) {
        if (operation != host::Operation::kGetAllSensorData) return;
        fetching.set_value();
        gate.wait();
    });
    auto slow = std::async(std::launch::async, [] { CustomShadingUtil::UpdateSensorData(0, 1, 1); });
    fetching.get_future().wait();

    // What needs a monitor waits; what does not, does not.
    bool started = false;
    auto waiting = test::startUntilItWaits([&] { started = CustomShadingUtil::RegisterAndStartSensorMonitor(1, 6); });
    EXPECT_TRUE(CustomShadingUtil::IsSupportFeature(2, 1));
    int index = 0;
    CustomShadingUtil::GetMultiTableIndex(index, 2);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(waiting.wait_for(0ms), std::future_status::timeout);
    release.set_value();
    slow.get();
    waiting.get();
    EXPECT_TRUE(started);
    host::setHook(nullptr);
    CustomShadingUtil::UnRegisterSensorMonitor(0);
    CustomShadingUtil::UnRegisterSensorMonitor(1);
}

}  // namespace
