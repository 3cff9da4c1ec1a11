// Every exported function in a state where it does its full work, with every allocation, lock and platform operation
// failing in turn, once or from there on. Whatever fails: no exception, outputs as they were or complete, no lock kept,
// and the same call succeeds afterwards. Leaks are the address sanitizer's to find.
#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <future>
#include <memory>
#include <sstream>
#include <string_view>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/Faults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"
#include "tests/support/ScratchDirectory.h"

namespace {

using test::kMs;
using test::kSensor;

constexpr int kOther = 2;  // a calibrated sensor without a monitor
constexpr int kIdle = 3;   // one whose monitor does not run and knows no rolling shutter
constexpr auto kHall = static_cast<NSCam::Utils::eSensorType>(test::kHallType);
constexpr std::uint32_t kColourTag = 0x90040159;

// The tags of each exposure's x and y.
constexpr std::uint32_t kSinglePair[] = {0xC0030033, 0xC0030034};
constexpr std::uint32_t kNePair[] = {0xC0030035, 0xC0030036};
constexpr std::uint32_t kSePair[] = {0xC0030037, 0xC0030038};

template <typename Values>
std::string listed(const Values& values) {
    std::ostringstream text;
    for (const auto& value : values)
        text << ' ' << value;
    return text.str();
}

// An entry without values is as good as none.
std::string listed(const NSCam::IMetadata& metadata, const std::uint32_t (&pair)[2]) {
    return listed(test::entry<double>(metadata, pair[0])) + " |" + listed(test::entry<double>(metadata, pair[1]));
}

// The platform, the customer object, and the outputs of every call.
struct World {
    World() {
        host::reset();
        for (const int sensor : {kSensor, kOther, kIdle})
            host::setSensor(sensor, test::calibratedSensor());
        host::setCameraMode("high_pixel_mode");
        // Each traced step is a point of failure like the one before it: only CI takes them all.
        host::setProperty("vendor.tarvo.3a.lscutil.log", std::getenv("CI") != nullptr ? 4 : 1);
        host::setProperty("vendor.debug.capture.lsc.ois.dump", 1);
        host::setMetadataEntry(single, kColourTag, std::vector<float>(18, 2.5F));
        // A new object for each run, in place of the one that lives as long as a process.
        test::dropCustomerObject();
        test::startWith(test::millisecondSamples(1000 * kMs, 200));
        CustomShadingUtil::IsSupportFeature(2, kSensor);
        object = test::customerObject();
        object->RegisterSensorMonitor(kIdle, 7);
        // The next batch overlaps the buffered one, so it is divided anew.
        host::deliverSamples(kHall, test::millisecondSamples(1190 * kMs + 1, 30));
        host::setLogSwitches(3, test::kAllDetails, test::kAllModules);
        host::setLogSink([](const host::LogEntry&) {});
    }

    // All that a caller can see. A line changes as a whole or not at all.
    std::vector<std::string> look() {
        std::string frames;
        for (const unsigned int frame : {1U, 2U}) {
            std::vector<NSCam::Utils::SensorData> held;
            object->QuerySensorData(held, kSensor, frame, 0);
            frames += listed(test::stamps(held)) + " |";
        }
        return {"numbers" + listed(std::array{result ? 1 : 0, index}),
                "array" + listed(array),
                "floats" + listed(floats),
                "vectors" + listed(x) + " |" + listed(y),
                "samples" + listed(test::stamps(samples)),
                "timing" + listed(std::array{input.sof_timestamp, input.sof_timestamp_ne, input.sof_timestamp_se,
                                             input.exposure_time, input.exposure_time_ne, input.exposure_time_se}),
                "single" + listed(single, kSinglePair),
                "ne" + listed(multi, kNePair),
                "se" + listed(multi, kSePair),
                "colour" + listed(test::entry<float>(single, kColourTag)),
                "record" + listed(record),
                "buffer" + frames,
                "monitors" + listed(std::array<unsigned int, 5>{
                                 object->IsEnabled(kSensor), object->IsEnabled(kOther), object->IsEnabled(kIdle),
                                 object->QueryRollingShutter(kSensor), object->QueryRollingShutter(kIdle)})};
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
    NSCam::IMetadata multi = test::multiFrame(1100 * kMs, 1110 * kMs, 20 * kMs, 8 * kMs);
    std::array<int, 200> record = {};
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

template <typename Record, typename... Arguments>
void runHook(void (CustomShadingFlow::*hook)(Record&, Arguments&...) noexcept, Arguments&... arguments) {
    Record record = {};
    (CustomShadingFlow(1).*hook)(record, arguments...);
}

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
         w.object->SwapOTPInfo(source, reinterpret_cast<unsigned char*>(w.record.data()), kSensor);
     }},
    {"QuerySensorInfo",
     [](World& w) {
         unsigned int mode = test::kMode;
         w.object->QuerySensorInfo(kSensor, 0x400F, reinterpret_cast<unsigned long>(&w.index), 0,
                                   reinterpret_cast<unsigned long>(&mode));
     }},
    {"RegisterAndStartSensorMonitor",
     [](World& w) { w.result = CustomShadingUtil::RegisterAndStartSensorMonitor(kOther, 6); }},
    {"RegisterSensorMonitor", [](World& w) { w.result = w.object->RegisterSensorMonitor(kOther, 6); }},
    {"StartSensorMonitor", [](World& w) { w.result = w.object->StartSensorMonitor(kIdle); }},
    {"UnRegisterSensorMonitor", [](World&) { CustomShadingUtil::UnRegisterSensorMonitor(kSensor); }},
    {"UpdateSensorData",
     // The first try takes the samples from the provider, whatever becomes of them.
     [](World&) { CustomShadingUtil::UpdateSensorData(kSensor, 2, 7); }, false},
    {"StoreRollingShutter", [](World&) { CustomShadingUtil::StoreRollingShutter(kIdle, test::kMode); }},
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
    {"fillLscOISCompInfo.multi",
     [](World& w) {
         host::setLogSwitches(0, 0, 0);  // its messages are those of the row before
         CustomShadingUtil::fillLscOISCompInfo(kSensor, &w.multi);
     }},
    {"ConvertColorSensorInfo",
     [](World& w) {
         const int source[18] = {1, 2, 3};
         CustomShadingUtil::ConvertColorSensorInfo(CustShadingType::kFrame, reinterpret_cast<long>(source),
                                                   reinterpret_cast<long>(w.record.data()));
     }},
    {"UpdateMetaInfo",
     [](World& w) {
         CustomShadingUtil::UpdateMetaInfo(CustShadingType::kColorSensorInfo, address(w.single), w.floats);
     }},
    {"QueryMetaInfo",
     [](World& w) {
         CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, address(w.single), w.floats);
     }},
    {"init", [](World&) { runHook(&CustomShadingFlow::init); }},
    {"config", [](World&) { runHook(&CustomShadingFlow::config); }},
    {"setParam", [](World&) { runHook(&CustomShadingFlow::setParam); }},
    {"getResult", [](World&) { runHook(&CustomShadingFlow::getResult); }},
    {"uninit", [](World&) { runHook(&CustomShadingFlow::uninit); }},
    {"calculate", [](World& w) { runHook(&CustomShadingFlow::calculate, w.table); }},
    {"calculate.empty",
     [](World& w) {
         w.table.clear();
         runHook(&CustomShadingFlow::calculate, w.table);
     }},
    {"setCustomShadingDebugInfo",
     [](World& w) {
         SHADING_DEBUG_INFO_S info;
         CustomShadingFlow(1).setCustomShadingDebugInfo(info);
         std::memcpy(w.record.data(), &info, w.record.size() * sizeof w.record[0]);
     }},
    {"TarvoShadingCustomUtil", [](World&) { const TarvoShadingCustomUtil util; }},
};

// Stand on nothing that can fail.
bool cannotFail(std::string_view name) {
    return name == "SwapOTPInfo" || name == "ConvertColorSensorInfo";
}

class FaultSweep : public test::HostTest, public testing::WithParamInterface<Call> {
protected:
    FaultSweep() { std::filesystem::create_directories(test::kDumpDirectory); }
    ~FaultSweep() override { test::dropCustomerObject(); }

    // From another thread, which a kept lock would hold up for ever.
    static void expectNoLockKept() {
        std::async(std::launch::async, [] {
            int index = 0;
            CustomShadingUtil::GetMultiTableIndex(index, kSensor);
            CustomShadingUtil::GetMultiTableIndex(index, kOther);
            CustomShadingUtil::StoreRollingShutter(-5, 0);
            std::vector<NSCam::Utils::SensorData> samples;
            test::customerObject()->QuerySensorData(samples, kSensor, 9, 0);
        }).get();
    }

    using Lines = std::vector<std::string>;

    // One run with one fault; false when there was no n-th point to strike at.
    static bool runWith(test::Fault fault, std::size_t n, test::Repeat repeat, const Lines& complete) {
        const auto world = std::make_unique<World>();
        const Lines before = world->look();
        bool struck = false;
        {
            const test::FaultAt armed(fault, n, repeat);
            GetParam().run(*world);
            struck = armed.struck();
        }
        const Lines after = world->look();
        for (std::size_t i = 0; i < after.size(); ++i) {
            // A position whose x was written when its y failed; the next call for the frame writes both.
            const bool half = complete[i] != before[i] && after[i].ends_with(" |") && complete[i].starts_with(after[i]);
            EXPECT_TRUE(after[i] == before[i] || after[i] == complete[i] || half)
                << after[i] << "\nbefore: " << before[i];
        }
        expectNoLockKept();
        if (GetParam().complete) {
            GetParam().run(*world);
            EXPECT_EQ(world->look(), complete);
        }
        return struck;
    }

    const test::ScratchDirectory mScratch;
};

TEST_P(FaultSweep, LeavesAllAsItWasOrComplete) {
    World world;
    GetParam().run(world);
    const Lines complete = world.look();
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
    EXPECT_TRUE(struck != 0 || !test::kLocksFail || cannotFail(GetParam().name));
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
