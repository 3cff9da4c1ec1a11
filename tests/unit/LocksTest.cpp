// Each operation that must hold a lock, while another thread changes what the lock guards. The thread sanitizer sees a
// lock that was not taken, whatever the timing: nothing else here orders the two threads.
#include <gtest/gtest.h>

#include <future>
#include <latch>

#include "customer/aaa/aaa/lsc/TarvoSensorMonitor.h"
#include "tests/support/Scene.h"

namespace {

using Buffer = TarvoShadingCustomUtil::TarvoSensorData;

constexpr int kRounds = 100;
constexpr int kNone = 8;  // a sensor without a monitor: the operation looks for it, and asks no platform
constexpr int kComing = 9;

template <typename Subject>
struct Operation {
    const char* name;
    void (*run)(Subject&);
};
template <typename Subject>
void PrintTo(const Operation<Subject>& operation, std::ostream* out) {
    *out << operation.name;
}

const Operation<TarvoShadingCustomUtil> kRegistry[] = {
    {"IsEnabled", [](auto& util) { util.IsEnabled(kNone); }},
    {"QueryRollingShutter", [](auto& util) { util.QueryRollingShutter(kNone); }},
    {"StoreRollingShutter", [](auto& util) { util.StoreRollingShutter(kNone, 0); }},
    {"RegisterSensorMonitor", [](auto& util) { util.RegisterSensorMonitor(test::kSensor, 0); }},
    {"StartSensorMonitor", [](auto& util) { util.StartSensorMonitor(kNone); }},
    {"UnRegisterSensorMonitor", [](auto& util) { util.UnRegisterSensorMonitor(kNone); }},
    {"UpdateSensorData", [](auto& util) { util.UpdateSensorData(kNone, 1, 1); }},
    {"QuerySensorData",
     [](auto& util) {
         std::vector<NSCam::Utils::SensorData> samples;
         util.QuerySensorData(samples, kNone, 1, 0);
     }},
};

const Operation<Buffer> kBuffer[] = {
    {"pushValue",
     [](Buffer& buffer) {
         auto batch = test::millisecondSamples(0, 1);
         buffer.pushValue(1, batch);
     }},
    {"getDataByFrame",
     [](Buffer& buffer) {
         lsc::Samples out;
         buffer.getDataByFrame(1, out);
     }},
    {"getDataByTimestamp",
     [](Buffer& buffer) {
         lsc::Samples out;
         buffer.getDataByTimestamp(1, out);
     }},
    {"frameCount", [](Buffer& buffer) { buffer.frameCount(); }},
    {"clear", [](Buffer& buffer) { buffer.clear(); }},
};

// Both at once, again and again.
template <typename Operation, typename Change>
void race(const Operation& operation, const Change& change) {
    std::latch start(2);
    const auto repeat = [&start](const auto& work) {
        start.arrive_and_wait();
        for (int round = 0; round < kRounds; ++round)
            work();
    };
    const auto changing = std::async(std::launch::async, [&] { repeat(change); });
    repeat(operation);
}

class RegistryLock : public test::HostTest, public testing::WithParamInterface<Operation<TarvoShadingCustomUtil>> {};

TEST_P(RegistryLock, IsHeld) {
    TarvoShadingCustomUtil util;
    util.RegisterSensorMonitor(test::kSensor, test::kHallType);
    race([&] { GetParam().run(util); },
         [&] {
             util.RegisterSensorMonitor(kComing, test::kHallType);
             util.UnRegisterSensorMonitor(kComing);
         });
    EXPECT_FALSE(util.IsEnabled(kComing));
}
INSTANTIATE_TEST_SUITE_P(Every, RegistryLock, testing::ValuesIn(kRegistry),
                         [](const auto& its) { return its.param.name; });

class BufferLock : public test::HostTest, public testing::WithParamInterface<Operation<Buffer>> {};

TEST_P(BufferLock, IsHeld) {
    Buffer buffer(30, 0);
    race([&] { GetParam().run(buffer); },
         [&] {
             auto batch = test::millisecondSamples(0, 2);
             buffer.pushValue(2, batch);
             buffer.clear();
         });
    buffer.clear();
    EXPECT_EQ(buffer.frameCount(), 0U);
}
INSTANTIATE_TEST_SUITE_P(Every, BufferLock, testing::ValuesIn(kBuffer), [](const auto& its) { return its.param.name; });

}  // namespace
