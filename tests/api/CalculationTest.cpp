// A frame's position from end to end, and what a calculation allocates and copies.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <map>
#include <memory>
#include <numeric>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/Faults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"
#include "tests/support/ScratchDirectory.h"

namespace {

using host::Operation;
using test::kMs;
using test::kSensor;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kX = 0xC0030033;
constexpr std::uint32_t kY = 0xC0030034;
constexpr std::uint32_t kNeX = 0xC0030035;
constexpr std::uint32_t kSeX = 0xC0030037;
constexpr std::uint32_t kSeY = 0xC0030038;

// 200 samples from 1 s on; exposure 20 ms and readout 10 ms shift them by 5.598 ms.
class Calculation : public test::HostTest {
protected:
    Calculation() {
        host::setSensor(kSensor, test::calibratedSensor());
        test::startWith(test::millisecondSamples(1000 * kMs, 200));
    }

    static std::map<Operation, int> burstsOf(NSCam::IMetadata& metadata) {
        std::map<Operation, int> counts;
        host::setHook([&](Operation operation) { ++counts[operation]; });
        CustomShadingUtil::fillLscOISCompInfo(kSensor, &metadata);
        host::setHook(nullptr);
        return counts;
    }

    static CalcOISValueInput frameAt(std::int64_t sofMs) {
        CalcOISValueInput input;
        input.sof_timestamp = static_cast<std::uint64_t>(sofMs * kMs);
        input.exposure_time = 20 * kMs;
        return input;
    }
};

TEST_F(Calculation, WritesAFramesPositionOnce) {
    NSCam::IMetadata frame = test::singleFrame(1100 * kMs, 20 * kMs);
    auto bursts = burstsOf(frame);
    EXPECT_EQ(bursts[Operation::kBurstRead], 3);
    EXPECT_EQ(bursts[Operation::kBurstWrite], 1);
    // Exposure began at 1080 ms; the sample of 1074 ms counts for 1079.598 ms, the readout ends 10 samples later.
    EXPECT_THAT(test::entry<double>(frame, kX), ElementsAre(79, 0));
    EXPECT_THAT(test::entry<double>(frame, kY), ElementsAre(-158, 0));

    bursts = burstsOf(frame);
    EXPECT_EQ(bursts[Operation::kBurstRead], 2);
    EXPECT_EQ(bursts[Operation::kBurstWrite], 0);
}

TEST_F(Calculation, ServesEachExposureOfAMultiExposureFrameOnItsOwn) {
    NSCam::IMetadata frame = test::multiFrame(1100 * kMs, 5000 * kMs, 20 * kMs, 8 * kMs);
    CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
    EXPECT_THAT(test::entry<double>(frame, kNeX), ElementsAre(79, 0));
    EXPECT_THAT(test::entry<double>(frame, kSeX), IsEmpty());
    EXPECT_THAT(test::entry<double>(frame, kX), IsEmpty());

    // All four entries make a served frame; with one missing both exposures are computed again.
    host::setMetadataEntry(frame, kNeX, std::vector<double>{1});
    host::setMetadataEntry(frame, kSeX, std::vector<double>{2});
    CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
    EXPECT_THAT(test::entry<double>(frame, kNeX), ElementsAre(79, 0));
    host::setMetadataEntry(frame, kNeX, std::vector<double>{1});
    host::setMetadataEntry(frame, kSeY, std::vector<double>{3});
    CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
    EXPECT_THAT(test::entry<double>(frame, kNeX), ElementsAre(1));
}

TEST_F(Calculation, ValuesOutsideTheExposureBlockReadAsZero) {
    TarvoShadingCustomUtil util;
    NSCam::IMetadata frame = test::singleFrame(5, 20 * kMs);
    std::vector<std::size_t> sizes(140);
    std::iota(sizes.begin() + 1, sizes.end(), 4580);  // after one of 0
    for (const std::size_t size : sizes) {
        const auto bytes = std::make_shared<std::vector<std::uint8_t>>(size, std::uint8_t{1});
        host::setMetadataEntry(frame, 0xC0030000, NSCam::IMetadata::Memory(bytes));
        CalcOISValueInput input;
        EXPECT_EQ(util.fillLscCalcOISValueInputInfo(&frame, input), 0);
        EXPECT_EQ(input.exposure_time, size >= 4600 ? 0x0101010101010101U : 0U) << size;
        EXPECT_EQ(input.exposure_time_ne, input.exposure_time);
        EXPECT_EQ(input.exposure_time_se, size >= 4712 ? 0x0101010101010101U : 0U) << size;
    }
}

TEST_F(Calculation, FailureLeavesTheCallersVectors) {
    std::vector<double> x = {1, 2, 3};
    std::vector<double> y = {4};
    for (const std::int64_t sofMs : {0, 900, 5000}) {
        CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, frameAt(sofMs), &x, &y, 0, kSensor);
        EXPECT_THAT(x, ElementsAre(1, 2, 3));
        EXPECT_THAT(y, ElementsAre(4));
    }
    CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, frameAt(1100), &x, &y, 0, kSensor);
    EXPECT_THAT(x, ElementsAre(79, 0));
    EXPECT_THAT(y, ElementsAre(-158, 0));
}

TEST_F(Calculation, AllocatesTheSampleCopyAndTheResultsAlone) {
    std::vector<double> x;
    std::vector<double> y;
    const CalcOISValueInput input = frameAt(1100);
    const std::size_t before = test::allocationCount();
    CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, input, &x, &y, 0, kSensor);
    EXPECT_EQ(test::allocationCount() - before, 3U);
    EXPECT_THAT(x, ElementsAre(79, 0));
}

TEST_F(Calculation, AStoredRollingShutterGoesWithItsMonitor) {
    TarvoShadingCustomUtil util;
    util.StoreRollingShutter(kSensor, test::kMode);
    EXPECT_EQ(util.QueryRollingShutter(kSensor), 0U);
    util.RegisterSensorMonitor(kSensor, test::kHallType);
    util.StoreRollingShutter(kSensor, test::kMode);
    EXPECT_EQ(util.QueryRollingShutter(kSensor), test::kReadoutNs);
    util.StoreRollingShutter(kSensor, test::kMode + 1);
    EXPECT_EQ(util.QueryRollingShutter(kSensor), 0U);
    util.UnRegisterSensorMonitor(kSensor);
    EXPECT_EQ(util.QueryRollingShutter(kSensor), 0U);
}

TEST_F(Calculation, WritesXThenYAndSaysSoWhateverTheMetadataTakes) {
    host::setLogSwitches(1, test::kAllDetails, test::kAllModules);
    for (const std::uint32_t refused : {kX, kY}) {
        NSCam::IMetadata frame = test::singleFrame(1100 * kMs, 20 * kMs);
        test::LogCapture log;
        host::setFailures({.access = {{refused, {.write = -1}}}});
        CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
        host::setFailures({});
        EXPECT_EQ(test::entry<double>(frame, kX).empty(), refused == kX);
        EXPECT_EQ(test::entry<double>(frame, kY).empty(), refused == kY);
        EXPECT_THAT(log.take().back(), testing::HasSubstr("cust_lsc_type:1 fill OIS value success!!!"));
        // One axis alone does not count as written.
        CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
        EXPECT_THAT(test::entry<double>(frame, kX), ElementsAre(79, 0));
        EXPECT_THAT(test::entry<double>(frame, kY), ElementsAre(-158, 0));
    }
}

TEST_F(Calculation, OneVectorPassedAsBothHoldsXThenYThenZeros) {
    std::vector<double> both = {1, 2, 3};
    CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, frameAt(1100), &both, &both, 0, kSensor);
    EXPECT_THAT(both, ElementsAre(79, -158, 0, 0));
}

TEST_F(Calculation, ABurstMayNeverRunItsCallbackOrRunItTwice) {
    for (const auto& [runs, served] : {std::pair{0, false}, {2, true}}) {
        NSCam::IMetadata frame = test::singleFrame(1100 * kMs, 20 * kMs);
        host::setFailures({.burstRuns = runs});
        CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
        host::setFailures({});
        EXPECT_EQ(test::entry<double>(frame, kX), served ? (std::vector<double>{79, 0}) : std::vector<double>());
    }
}

TEST_F(Calculation, EntriesOfHugeCountsAreReadAsTheyAre) {
    NSCam::IMetadata frame = test::multiFrame(1, 1, 20 * kMs, 8 * kMs);
    std::vector<std::int64_t> pairs(200'001, 4);
    pairs[199'999] = 1100 * kMs;
    host::setMetadataEntry(frame, 0xC00A0006, pairs);
    host::setMetadataEntry(frame, kSeX, std::vector<double>(100'000));
    CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
    EXPECT_THAT(test::entry<double>(frame, kNeX), ElementsAre(79, 0));
    EXPECT_EQ(test::entry<double>(frame, kSeX).size(), 100'000U);
}

TEST_F(Calculation, AHugeBatchIsFiledAndSearched) {
    host::deliverSamples(static_cast<NSCam::Utils::eSensorType>(test::kHallType),
                         test::millisecondSamples(1200 * kMs, 100'000));
    CustomShadingUtil::UpdateSensorData(kSensor, 2, 1);
    NSCam::IMetadata frame = test::singleFrame(100'000 * kMs, 20 * kMs);
    CustomShadingUtil::fillLscOISCompInfo(kSensor, &frame);
    // The sample of 99 974 ms counts for the exposure's start at 99 980 ms.
    EXPECT_THAT(test::entry<double>(frame, kX), ElementsAre(98'779, 0));
}

// A customer object of the test's own, made with these settings.
class Settings : public test::HostTest {
protected:
    TarvoShadingCustomUtil& makeWith(std::int32_t logLevel, std::int32_t mode, std::int32_t dump,
                                     const std::vector<NSCam::Utils::SensorData>& samples) {
        host::setProperty("vendor.tarvo.3a.lscutil.log", logLevel);
        host::setProperty("vendor.debug.ois.hall.calculation", mode);
        host::setProperty("vendor.debug.capture.lsc.ois.dump", dump);
        host::setSensor(kSensor, test::calibratedSensor());
        mUtil = std::make_unique<TarvoShadingCustomUtil>();
        mUtil->RegisterAndStartSensorMonitor(kSensor, test::kHallType);
        mUtil->StoreRollingShutter(kSensor, test::kMode);
        host::deliverSamples(static_cast<NSCam::Utils::eSensorType>(test::kHallType), samples);
        mUtil->UpdateSensorData(kSensor, 1, 1);
        host::setLogSwitches(1, test::kAllDetails, test::kAllModules);
        return *mUtil;
    }

    // Lines of the log that hold `text`, while a calculation of these times runs.
    static long linesWith(const char* text, TarvoShadingCustomUtil& util, const CalcOISValueInput& input) {
        test::LogCapture log;
        std::vector<double> x;
        std::vector<double> y;
        util.CalcOISValue(CustShadingType::kFrame, input, &x, &y, 0, kSensor);
        const auto lines = log.take();
        return std::count_if(lines.begin(), lines.end(),
                             [text](const std::string& line) { return line.find(text) != std::string::npos; });
    }

    std::unique_ptr<TarvoShadingCustomUtil> mUtil;
};

TEST_F(Settings, TheSpanIsTracedWhereEveryEntryCounts) {
    for (const auto& [mode, traced] : {std::pair{0, 11}, {1, 11}, {2, 0}, {3, 0}, {4, 0}}) {
        auto& util = makeWith(3, mode, 0, test::millisecondSamples(1000 * kMs, 200));
        const CalcOISValueInput input = {1100 * kMs, 0, 0, 20 * kMs, 0, 0};
        EXPECT_EQ(linesWith("Match OIS data, ", util, input), traced) << mode;
    }
}

TEST_F(Settings, TheTraceSkipsWhatTheSearchSkips) {
    // The first sample counts for time 0: its stamp is as early as the hall sensor is late.
    auto& util = makeWith(3, 0, 0, test::millisecondSamples(-166'000, 200));
    util.StoreRollingShutter(kSensor, test::kMode + 1);
    EXPECT_EQ(linesWith("startIndex, index = 0", util, {1'500'000, 0, 0, 0, 0, 0}), 0);
    EXPECT_EQ(linesWith("startIndex, index = 1", util, {1'500'000, 0, 0, 0, 0, 0}), 1);
    EXPECT_EQ(linesWith("stamp_up", util, {100 * kMs, 0, 0, 90'000 * kMs, 0, 0}), 0);
}

TEST_F(Settings, TheDumpIsForSingleNeAndSeExposures) {
    namespace fs = std::filesystem;
    const test::ScratchDirectory scratch;
    fs::create_directories(test::kDumpDirectory);
    auto& util = makeWith(0, 0, -2, test::millisecondSamples(1000 * kMs, 200));  // any setting but 0
    for (std::uint32_t type = 0; type < 8; ++type) {
        constexpr std::uint64_t kSof = 1100 * kMs;
        constexpr std::uint64_t kExposure = 20 * kMs;
        std::vector<double> x;
        std::vector<double> y;
        util.CalcOISValue(static_cast<CustShadingType>(type), {kSof, kSof, kSof, kExposure, kExposure, kExposure}, &x,
                          &y, type, kSensor);
    }
    std::vector<std::string> files;
    for (const auto& file : fs::directory_iterator(test::kDumpDirectory))
        files.push_back(file.path().filename());
    EXPECT_THAT(files, testing::UnorderedElementsAre("capture_camera_1_frame_1_1080000_oishall.txt",
                                                     "capture_camera_1_frame_5_1080000_oishall.txt",
                                                     "capture_camera_1_frame_6_1080000_oishall.txt"));
}

TEST_F(Settings, ADumpThatDoesNotFitIsReported) {
    const test::ScratchDirectory scratch;
    std::filesystem::create_directories(test::kDumpDirectory);
    auto& util = makeWith(0, 0, 1, test::millisecondSamples(1000 * kMs, 200));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {100, before.rlim_max};
    test::LogCapture log;
    std::vector<double> x;
    std::vector<double> y;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    util.CalcOISValue(CustShadingType::kSingleExposure, {1100 * kMs, 0, 0, 20 * kMs, 0, 0}, &x, &y, 3, kSensor);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_THAT(x, ElementsAre(79, 0));
    EXPECT_THAT(log.take(), testing::Contains(testing::HasSubstr("the OIS hall dump of frame 3 is not complete !!!")));
}

}  // namespace
