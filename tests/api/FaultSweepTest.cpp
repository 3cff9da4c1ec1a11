// Every exported function in a state where it does its full work, with every allocation, lock, platform operation and
// step of a file failing in turn, once or from there on. Whatever fails: no exception; result, outputs and state are
// all as they were or all complete; no message but those of the full work and of the failure; no lock, sensor object or
// file kept; and the same call succeeds afterwards. Leaks of memory are the address sanitizer's to find.
// One piece: the state that calls start from, the calls, and what a call is judged by name each other's parts.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <map>
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
constexpr int kFresh = 4;  // as kOther
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

using Lines = std::vector<std::string>;

std::string dumpFiles() {
    std::map<std::string, std::string> files;
    for (const auto& file : std::filesystem::directory_iterator(test::kDumpDirectory)) {
        std::ifstream content(file.path());
        files[file.path().filename()] = {std::istreambuf_iterator<char>(content), std::istreambuf_iterator<char>()};
    }
    std::string all;
    for (const auto& [name, content] : files)
        if (!content.empty()) all += name + ":\n" + content;
    return all;
}

// The platform, the customer object, and the outputs of every call.
struct World {
    World() {
        host::reset();
        std::filesystem::remove_all(test::kDumpDirectory);
        std::filesystem::create_directories(test::kDumpDirectory);
        for (const int sensor : {kSensor, kOther, kIdle, kFresh})
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
        deliverOverlap();
        host::setLogSwitches(3, test::kAllDetails, test::kAllModules);
        host::setLogSink([this](const host::LogEntry& entry) {
            const test::Pause recording;
            messages.push_back(test::describe(entry));
        });
    }

    ~World() { host::setLogSink(nullptr); }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // The next batch overlaps the buffered one, so it is divided anew. What was not fetched before does not come again.
    static void deliverOverlap() {
        std::vector<NSCam::Utils::SensorData> unfetched;
        NSCam::Utils::SensorProvider::createInstance("test")->getAllSensorData(kHall, unfetched);
        host::deliverSamples(kHall, test::millisecondSamples(1190 * kMs + 1, 30));
    }

    bool isRegistered(int sensor) {
        const std::size_t before = messages.size();
        std::vector<NSCam::Utils::SensorData> none;
        object->QuerySensorData(none, sensor, 9, 0);
        const bool known = std::none_of(messages.begin() + static_cast<std::ptrdiff_t>(before), messages.end(),
                                        [](const auto& text) { return text.find("not registered") != text.npos; });
        messages.resize(before);
        return known;
    }

    // All that a caller can see.
    Lines look() {
        const Lines kept = messages;
        Lines lines = state();
        messages = kept;
        return lines;
    }

    Lines state() {
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
                "registered" +
                    listed(std::array<bool, 3>{isRegistered(kSensor), isRegistered(kOther), isRegistered(kIdle)}),
                "monitors" + listed(std::array<unsigned int, 5>{
                                 object->IsEnabled(kSensor), object->IsEnabled(kOther), object->IsEnabled(kIdle),
                                 object->QueryRollingShutter(kSensor), object->QueryRollingShutter(kIdle)})};
    }

    TarvoShadingCustomUtil* object = nullptr;
    Lines messages = {};
    int other = kOther;
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
    // What else than all or nothing may be left.
    bool (*mayLeave)(const Lines& after, const Lines& before, const Lines& complete) = nullptr;
    // What the platform does before the same call is made again.
    void (*beforeRetry)(World&) = nullptr;
};

// Whether the lines are as before or complete but for those that begin with one of `names`, which `isFit` judges.
template <typename IsFit>
bool differsIn(std::initializer_list<std::string_view> names, const Lines& after, const Lines& before,
               const Lines& complete, IsFit isFit) {
    Lines outside[3];
    for (std::size_t i = 0; i < after.size(); ++i) {
        const bool named = std::ranges::any_of(names, [&](auto name) { return after[i].starts_with(name); });
        if (named && !isFit(after[i], before[i], complete[i])) return false;
        if (named) continue;
        outside[0].push_back(after[i]), outside[1].push_back(before[i]), outside[2].push_back(complete[i]);
    }
    return outside[0] == outside[1] || outside[0] == outside[2];
}

// Each exposure of a frame stands alone. A position whose x was written when its y failed is written anew by the next
// call.
bool exposureByExposure(const Lines& after, const Lines& before, const Lines& complete) {
    return differsIn({"single", "ne", "se"}, after, before, complete,
                     [](const std::string& now, const std::string& then, const std::string& full) {
                         const bool half = full != then && now.ends_with(" |") && full.starts_with(now);
                         return now == then || now == full || half;
                     });
}

// When the lock of the way back fails, too.
bool registeredOnly(const Lines& after, const Lines& before, const Lines& complete) {
    return differsIn({"registered"}, after, before, complete,
                     [](const std::string& now, const std::string&, const std::string& full) { return now == full; }) &&
           after.front() == before.front();
}

// A sensor's OTP memory is not read again after a failure; that of another one is.
void askAnother(World& world) {
    world.other = kFresh;
}

long address(NSCam::IMetadata& metadata) {
    return reinterpret_cast<long>(&metadata);
}

template <typename Record, typename... Arguments>
void runHook(void (CustomShadingFlow::*hook)(Record&, Arguments&...) noexcept, Arguments&... arguments) {
    Record record = {};
    (CustomShadingFlow(1).*hook)(record, arguments...);
}

const Call kCalls[] = {
    {"IsSupportFeature", [](World& w) { w.result = CustomShadingUtil::IsSupportFeature(2, w.other); }, nullptr,
     askAnother},
    {"IsEnableOisCompensation", [](World& w) { w.result = CustomShadingUtil::IsEnableOisCompensation(w.other, 0); }},
    {"IsSupportSeamlessSwitchForRemosaic",
     [](World& w) { w.result = CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(w.other); }, nullptr, askAnother},
    {"GetMultiTableIndex", [](World& w) { CustomShadingUtil::GetMultiTableIndex(w.index, w.other); }, nullptr,
     askAnother},
    {"QueryOTPInfo", [](World& w) { CustomShadingUtil::QueryOTPInfo(w.array.data(), w.array.size(), w.other); },
     nullptr, askAnother},
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
     [](World& w) { w.result = CustomShadingUtil::RegisterAndStartSensorMonitor(kOther, 6); }, registeredOnly},
    {"RegisterSensorMonitor", [](World& w) { w.result = w.object->RegisterSensorMonitor(kOther, 6); }},
    {"StartSensorMonitor", [](World& w) { w.result = w.object->StartSensorMonitor(kIdle); }},
    {"UnRegisterSensorMonitor", [](World&) { CustomShadingUtil::UnRegisterSensorMonitor(kSensor); }},
    {"UpdateSensorData",
     // The first try takes the samples from the provider, whatever becomes of them.
     [](World&) { CustomShadingUtil::UpdateSensorData(kSensor, 2, 7); }, nullptr,
     [](World&) { World::deliverOverlap(); }},
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
    {"fillLscOISCompInfo", [](World& w) { CustomShadingUtil::fillLscOISCompInfo(kSensor, &w.single); },
     exposureByExposure},
    {"fillLscOISCompInfo.multi",
     [](World& w) {
         host::setLogSwitches(0, 0, 0);  // its messages are those of the row before
         CustomShadingUtil::fillLscOISCompInfo(kSensor, &w.multi);
     },
     exposureByExposure},
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

// What a failure may say.
constexpr std::string_view kFailures[] = {
    "Not to stored OTPData !!!",
    "no memory for oisCalibration of",
    "IsSupportSeamlessSwitchForRemosaic(0)",
    "Sensor Monitor not registered sensorId:2",
    "disable sensorType 6",
    "Stop sensorId:2, mSensorMonitors.size:2",
    "Enable Sensor Fail !!!, UnRegisterSensorMonitor",
    "the OIS hall dump of frame 0 is not complete !!!",
    "rolling_shutter:0 ",
    "oisCount = 0,",
};

// Stand on nothing that can fail.
bool cannotFail(std::string_view name) {
    return name == "SwapOTPInfo" || name == "ConvertColorSensorInfo";
}

class FaultSweep : public test::HostTest, public testing::WithParamInterface<Call> {
protected:
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

    struct Healthy {
        Lines lines;
        Lines messages;
        std::string dump;
    };

    static Healthy healthy() {
        World world;
        GetParam().run(world);
        return {world.look(), world.messages, dumpFiles()};
    }

    static void judgeState(const Lines& after, const Lines& before, const Lines& complete) {
        const auto mayLeave = GetParam().mayLeave;
        if (after == before || after == complete || (mayLeave != nullptr && mayLeave(after, before, complete))) return;
        ADD_FAILURE() << "neither as before nor complete:";
        for (std::size_t i = 0; i < after.size(); ++i) {
            if (before[i] != complete[i]) {
                ADD_FAILURE() << after[i] << "\nbefore: " << before[i] << "\ncomplete: " << complete[i];
            }
        }
    }

    // Those of the full work in their order, some of them missing, and what a failure may say. The last one of the full
    // work says that it is done.
    static void judgeMessages(const World& world, const Lines& full, bool done) {
        auto next = full.begin();
        for (const std::string& message : world.messages) {
            const auto found = std::find(next, full.end(), message);
            if (found != full.end()) {
                next = found + 1;
            } else {
                EXPECT_TRUE(std::ranges::any_of(kFailures, [&](auto text) {
                    return message.find(text) != message.npos;
                })) << message;
            }
        }
        EXPECT_TRUE(done || full.empty() || next != full.end()) << full.back();
    }

    static void judgeDump(const World& world, const std::string& full) {
        const std::string dump = dumpFiles();
        const bool told = std::ranges::any_of(
            world.messages, [](const auto& text) { return text.find("is not complete") != text.npos; });
        const bool silent = GetParam().name == std::string_view("fillLscOISCompInfo.multi");
        EXPECT_TRUE(dump.empty() || dump == full || told || silent) << dump;
    }

    static void judgeRetry(World& world, const Lines& complete) {
        if (GetParam().beforeRetry != nullptr) GetParam().beforeRetry(world);
        GetParam().run(world);
        EXPECT_EQ(world.look(), complete) << "made again";
    }

    static std::ptrdiff_t openFiles() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    // One run with one fault; false when there was no n-th point to strike at.
    static bool runWith(test::Fault fault, std::size_t n, test::Repeat repeat, const Healthy& full) {
        const auto world = std::make_unique<World>();
        const Lines before = world->look();
        const std::ptrdiff_t files = openFiles();
        bool struck = false;
        {
            const test::FaultAt armed(fault, n, repeat);
            GetParam().run(*world);
            struck = armed.struck();
        }
        const Lines after = world->look();
        judgeState(after, before, full.lines);
        judgeMessages(*world, full.messages, after == full.lines || before == full.lines);
        judgeDump(*world, full.dump);
        // A file that cannot be written is no reason to leave work undone.
        EXPECT_TRUE(fault != test::Fault::kFile || after == full.lines);
        EXPECT_EQ(openFiles(), files);
        EXPECT_EQ(host::sensorObjectCounts().created, host::sensorObjectCounts().releaseCalls);
        expectNoLockKept();
        judgeRetry(*world, full.lines);
        return struck;
    }

    const test::ScratchDirectory mScratch;
};

TEST_P(FaultSweep, LeavesAllAsItWasOrComplete) {
    const Healthy full = healthy();
    std::size_t points = 0;
    for (const test::Fault fault : test::kFaults) {
        for (const test::Repeat repeat : {test::Repeat::kOnce, test::Repeat::kForever}) {
            std::size_t n = 0;
            while (!HasFailure() && runWith(fault, n, repeat, full))
                ++n;
            ASSERT_FALSE(HasFailure()) << "fault " << static_cast<int>(fault) << " at " << n;
            if (repeat == test::Repeat::kOnce) points += n;
        }
    }
    RecordProperty("points", static_cast<int>(points));
    EXPECT_TRUE(points != 0 || !test::kLocksFail || cannotFail(GetParam().name));
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
