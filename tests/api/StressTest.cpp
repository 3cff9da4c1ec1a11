// Many threads at once, on shared and on different sensors. The thread sanitizer watches in its preset; here the test
// ends in time, and every position written is a possible one.
#include <gmock/gmock.h>

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
constexpr auto kDuration = 700ms;

NSCam::Utils::eSensorType typeOf(int sensor) {
    return static_cast<NSCam::Utils::eSensorType>(sensor + 5);
}

class Stress : public test::HostTest {
protected:
    Stress() {
        host::setProperty("vendor.tarvo.3a.lscutil.log", 4);
        host::setCameraMode("high_pixel_mode");
        host::setLogSink([](const host::LogEntry&) {});
        for (int sensor = 0; sensor < kSensors; ++sensor)
            host::setSensor(sensor, test::calibratedSensor());
    }

    // Runs `work` with a growing number until the time is over.
    template <typename Work>
    std::future<void> repeat(Work work) {
        return std::async(std::launch::async, [this, work] {
            for (unsigned int round = 1; !mOver.load(std::memory_order_relaxed); ++round)
                work(round);
        });
    }

    std::atomic<bool> mOver = false;
};

void feed(int sensor, unsigned int round) {
    const std::int64_t begin = std::int64_t{round} * 40 * kMs;
    host::deliverSamples(typeOf(sensor), test::millisecondSamples(begin, 40));
    CustomShadingUtil::UpdateSensorData(sensor, round, static_cast<unsigned long>(begin));
}

void askFrame(int sensor, unsigned int round) {
    NSCam::IMetadata frame =
        test::multiFrame(std::int64_t{round} * 20 * kMs, std::int64_t{round} * 20 * kMs + 1, 5 * kMs, 2 * kMs);
    CustomShadingUtil::fillLscOISCompInfo(sensor, &frame);
    for (const std::uint32_t tag : {0xC0030035U, 0xC0030037U}) {
        const auto x = test::entry<double>(frame, tag);
        EXPECT_TRUE(x.empty() || (x.size() == 2 && x[0] >= 0 && x[0] < 40 && x[1] == 0)) << testing::PrintToString(x);
    }
}

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

TEST_F(Stress, EveryFunctionOnManyThreads) {
    for (int sensor = 0; sensor < kSensors; ++sensor)
        CustomShadingUtil::IsSupportFeature(2, sensor);
    {
        std::vector<std::future<void>> threads;
        for (int sensor = 0; sensor < kSensors; ++sensor) {
            threads.push_back(repeat([sensor](unsigned int round) { feed(sensor, round); }));
            threads.push_back(repeat([sensor](unsigned int round) { askFrame(sensor, round); }));
            threads.push_back(repeat([sensor](unsigned int round) {
                CustomShadingUtil::RegisterAndStartSensorMonitor(sensor, static_cast<unsigned int>(sensor) + 5);
                CustomShadingUtil::StoreRollingShutter(sensor, test::kMode);
                std::this_thread::sleep_for(3ms);
                if (round % 4 == 0) CustomShadingUtil::UnRegisterSensorMonitor(sensor);
            }));
        }
        for (int i = 0; i < 2; ++i) {
            threads.push_back(
                repeat([](unsigned int round) { askAll(static_cast<int>(round % kSensors), round % 20); }));
        }
        threads.push_back(repeat([](unsigned int round) {
            host::setLogSwitches(static_cast<std::int32_t>(round % 4), test::kAllDetails, test::kAllModules);
            std::this_thread::sleep_for(1ms);
        }));
        std::this_thread::sleep_for(kDuration);
        mOver = true;
    }
    for (int sensor = 0; sensor < kSensors; ++sensor)
        CustomShadingUtil::UnRegisterSensorMonitor(sensor);
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
