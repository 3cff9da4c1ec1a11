// Every exported function in a state where it does its full work, with every allocation, lock and platform operation
// failing in turn, once or from there on. Whatever fails: no exception, outputs as they were or complete, no lock kept,
// and the same call succeeds afterwards. Leaks are the address sanitizer's to find.
#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <future>
#include <memory>
#include <sstream>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/Faults.h"
#include "tests/support/Scene.h"

namespace {

using test::kMs;
using test::kSensor;

constexpr int kOther = 2;                  // a calibrated sensor without a monitor
constexpr unsigned int kUnknownMode = 99;  // the driver leaves the time at 0, as a driver out of reach does
constexpr auto kHall = static_cast<NSCam::Utils::eSensorType>(test::kHallType);

// The platform, the customer object, and the outputs of every call.
struct World {
    World() {
        host::reset();
        host::setSensor(kSensor, test::calibratedSensor());
        host::setSensor(kOther, test::calibratedSensor());
        host::setCameraMode("high_pixel_mode");
        host::setProperty("vendor.tarvo.3a.lscutil.log", 1);
        host::setLogSwitches(3, 5, 0x821000);
        host::setLogSink([](const host::LogEntry&) {});
        host::setMetadataEntry(single, 0x90040159, std::vector<float>(18, 2.5F));
        {
            // A new object for each run, in place of the one that lives as long as a process.
            const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
            delete TarvoShadingCustomUtil::mSingleInstance;
            TarvoShadingCustomUtil::mSingleInstance = nullptr;
        }
        test::startWith(test::millisecondSamples(1000 * kMs, 200));
        CustomShadingUtil::IsSupportFeature(2, kSensor);
        object = TarvoShadingCustomUtil::mSingleInstance;
        // The next batch overlaps the buffered one, so it is divided anew.
        host::deliverSamples(kHall, test::millisecondSamples(1190 * kMs + 1, 30));
    }

    // All that a caller can see, as text.
    std::string fingerprint() {
        std::ostringstream text;
        const auto list = [&text](const char* name, const auto& values) {
            text << name << ':';
            for (const auto& value : values)
                text << ' ' << value;
            text << '\n';
        };
        list("result", std::array{result ? 1 : 0, index});
        list("array", array);
        list("floats", floats);
        list("x", x);
        list("y", y);
        list("samples", test::stamps(samples));
        list("timing", std::array{input.sof_timestamp, input.sof_timestamp_ne, input.sof_timestamp_se,
                                  input.exposure_time, input.exposure_time_ne, input.exposure_time_se});
        // An entry without values is as good as none.
        for (const std::uint32_t tag : {0xC0030033U, 0xC0030034U}) {
            if (const auto values = test::entry<double>(single, tag); !values.empty()) list("entry", values);
        }
        list("colour", test::entry<float>(single, 0x90040159));
        list("record", record);
        for (const unsigned int frame : {1U, 2U}) {
            std::vector<NSCam::Utils::SensorData> held;
            object->QuerySensorData(held, kSensor, frame, 0);
            list("frame", test::stamps(held));
        }
        list("monitors", std::array<unsigned int, 4>{object->IsEnabled(kSensor), object->IsEnabled(kOther),
                                                     object->QueryRollingShutter(kSensor), 0});
        return text.str();
    }

    TarvoShadingCustomUtil* object = nullptr;
    bool result = false;
    int index = 0;
    std::array<int, 8> array = {-1, -1, -1, -1, -1, -1, -1, -1};
    float floats[18] = {};
    std::vector<double> x = {1, 2, 3};
    std::vector<double> y = {4};
    std::vector<NSCam::Utils::SensorData> samples = {test::sample(1)};
    std::vector<unsigned int> table = {1};
    CalcOISValueInput input = {1100 * kMs, 0, 0, 20 * kMs, 0, 0};
    NSCam::IMetadata single = test::singleFrame(1100 * kMs, 20 * kMs);
    std::array<unsigned char, 80> record = {};
};

struct Call {
    const char* name;
    void (*run)(World&);
    bool complete = true;  // whether the same call, made again after any failure, gives the full result
};

long address(NSCam::IMetadata& metadata) {
    return reinterpret_cast<long>(&metadata);
}

// Queries of a sensor whose OTP read failed answer as for a module without calibration, for good.
constexpr bool kReadOnce = false;

const Call kCalls[] = {
    {"IsSupportFeature", [](World& w) { w.result = CustomShadingUtil::IsSupportFeature(2, kOther); }, kReadOnce},
    {"IsEnableOisCompensation", [](World& w) { w.result = CustomShadingUtil::IsEnableOisCompensation(kOther, 0); }},
    {"IsSupportSeamlessSwitchForRemosaic",
     [](World& w) { w.result = CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(kOther); }, kReadOnce},
    {"GetMultiTableIndex", [](World& w) { CustomShadingUtil::GetMultiTableIndex(w.index, kOther); }, kReadOnce},
    {"QueryOTPInfo", [](World& w) { CustomShadingUtil::QueryOTPInfo(w.array.data(), w.array.size(), kOther); },
     kReadOnce},
    {"QueryOTPInfoRead", [](World& w) { CustomShadingUtil::QueryOTPInfo(w.array.data(), w.array.size(), kSensor); }},
    {"SwapOTPInfo",
     [](World& w) {
         unsigned char source[20] = {1, 2, 3, 4};
         w.object->SwapOTPInfo(source, w.record.data(), kSensor);
     }},
    {"RegisterAndStartSensorMonitor",
     [](World& w) { w.result = CustomShadingUtil::RegisterAndStartSensorMonitor(kOther, 6); }},
    {"RegisterSensorMonitor", [](World& w) { w.result = w.object->RegisterSensorMonitor(kOther, 6); }},
    {"StartSensorMonitor", [](World& w) { w.result = w.object->StartSensorMonitor(kSensor); }},
    {"UnRegisterSensorMonitor", [](World&) { CustomShadingUtil::UnRegisterSensorMonitor(kSensor); }},
    {"UpdateSensorData",
     // The first try takes the samples from the provider, whatever becomes of them.
     [](World&) { CustomShadingUtil::UpdateSensorData(kSensor, 2, 7); }, false},
    {"StoreRollingShutter", [](World&) { CustomShadingUtil::StoreRollingShutter(kSensor, kUnknownMode); }},
    {"QueryRollingShutter", [](World& w) { w.result = w.object->QueryRollingShutter(kSensor) != 0; }},
    {"IsEnabled", [](World& w) { w.result = w.object->IsEnabled(kSensor); }},
    {"QuerySensorData.time",
     [](World& w) { w.object->QuerySensorData(w.samples, kSensor, 0, static_cast<unsigned long>(1100 * kMs)); }},
    {"QuerySensorData.frame", [](World& w) { w.object->QuerySensorData(w.samples, kSensor, 1, 0); }},
    {"CalcOISValue",
     [](World& w) {
         CustomShadingUtil::CalcOISValue(CustShadingType::kSingleExposure, w.input, &w.x, &w.y, 0, kSensor);
     }},
    {"fillLscCalcOISValueInputInfo",
     [](World& w) { w.result = w.object->fillLscCalcOISValueInputInfo(&w.single, w.input) == 0; }},
    {"fillLscOISCompInfo", [](World& w) { CustomShadingUtil::fillLscOISCompInfo(kSensor, &w.single); }},
    {"UpdateMetaInfo",
     [](World& w) {
         CustomShadingUtil::UpdateMetaInfo(CustShadingType::kColorSensorInfo, address(w.single), w.floats);
     }},
    {"QueryMetaInfo",
     [](World& w) {
         CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, address(w.single), w.floats);
     }},
    {"calculateEmptyTable",
     [](World& w) {
         custom_shading_calc_info info = {};
         w.table.clear();
         CustomShadingFlow(1).calculate(info, w.table);
     }},
    {"setCustomShadingDebugInfo",
     [](World& w) {
         SHADING_DEBUG_INFO_S info;
         CustomShadingFlow(1).setCustomShadingDebugInfo(info);
         std::memcpy(w.record.data(), &info, w.record.size());
     }},
    {"calculate",
     [](World& w) {
         custom_shading_calc_info info = {};
         CustomShadingFlow(1).calculate(info, w.table);
     }},
};

class FaultSweep : public test::HostTest, public testing::WithParamInterface<Call> {
protected:
    ~FaultSweep() override { delete std::exchange(TarvoShadingCustomUtil::mSingleInstance, nullptr); }

    // From another thread, which a kept lock would hold up for ever.
    static void expectNoLockKept() {
        std::async(std::launch::async, [] {
            int index = 0;
            CustomShadingUtil::GetMultiTableIndex(index, kSensor);
            CustomShadingUtil::GetMultiTableIndex(index, kOther);
            CustomShadingUtil::StoreRollingShutter(-5, 0);
            std::vector<NSCam::Utils::SensorData> samples;
            TarvoShadingCustomUtil::mSingleInstance->QuerySensorData(samples, kSensor, 9, 0);
        }).get();
    }

    // One run with one fault; false when there was no n-th point to strike at.
    static bool runWith(test::Fault fault, std::size_t n, test::Repeat repeat, const std::string& complete) {
        const auto world = std::make_unique<World>();
        const std::string before = world->fingerprint();
        bool struck = false;
        {
            const test::FaultAt armed(fault, n, repeat);
            GetParam().run(*world);
            struck = armed.struck();
        }
        const std::string after = world->fingerprint();
        // A platform that refuses one axis of a position and then its undoing, too, leaves nothing to be done.
        const bool excused = fault == test::Fault::kPlatform && repeat == test::Repeat::kForever &&
                             GetParam().name == std::string("fillLscOISCompInfo");
        EXPECT_TRUE(after == before || after == complete || excused) << after << "\nbefore:\n" << before;
        expectNoLockKept();
        if (GetParam().complete) {
            GetParam().run(*world);
            EXPECT_EQ(world->fingerprint(), complete);
        }
        return struck;
    }
};

TEST_P(FaultSweep, LeavesAllAsItWasOrComplete) {
    World world;
    GetParam().run(world);
    const std::string complete = world.fingerprint();
    std::size_t struck = 0;
    for (const test::Fault fault : test::kFaults) {
        for (const test::Repeat repeat : {test::Repeat::kOnce, test::Repeat::kForever}) {
            std::size_t n = 0;
            while (!HasFailure() && runWith(fault, n, repeat, complete))
                ++n;
            ASSERT_FALSE(HasFailure()) << "fault " << static_cast<int>(fault) << " at " << n;
            struck += n;
        }
    }
    RecordProperty("faults", static_cast<int>(struck));
    // Only a function that stands on nothing has nothing to fail.
    EXPECT_TRUE(struck != 0 || !test::kLocksFail || GetParam().name == std::string("SwapOTPInfo"));
}

INSTANTIATE_TEST_SUITE_P(Exported, FaultSweep, testing::ValuesIn(kCalls), [](const auto& call) {
    std::string name = call.param.name;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

void PrintTo(const Call& call, std::ostream* out) {
    *out << call.name;
}

TEST(FaultSweepHook, AnInstanceWithoutMemoryIsMadeByTheNextCall) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "The thread sanitizer's pthread_once stays taken for ever when its routine throws.";
#endif
    CustomShadingFlow* first = nullptr;
    {
        const test::NoMemory none;
        first = CustomShadingFlow::getInstance(7);
    }
    EXPECT_EQ(first, nullptr);
    first = CustomShadingFlow::getInstance(7);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(CustomShadingFlow::getInstance(7), first);
    EXPECT_EQ(CustomShadingFlow::getInstance(20), nullptr);
    EXPECT_EQ(CustomShadingFlow::getInstance(-1), nullptr);
}

}  // namespace
