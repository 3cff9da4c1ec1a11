// The one customer object behind the facade: made once, by whoever comes first, from properties read once.
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <string_view>
#include <thread>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/Faults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"

namespace {

using testing::IsEmpty;

class Facade : public test::HostTest {};

TEST_F(Facade, RacingFirstCallsMakeOneObject) {
    constexpr int kThreads = 8;
    std::atomic<int> propertyReads = 0;
    std::latch start(kThreads);
    host::setHook([&](host::Operation operation) {
        if (operation != host::Operation::kPropertyGet) return;
        ++propertyReads;
        std::this_thread::yield();  // widens the race
    });
    std::vector<std::future<bool>> answers;
    for (int i = 0; i < kThreads; ++i) {
        answers.push_back(std::async(std::launch::async, [&start] {
            start.arrive_and_wait();
            return CustomShadingUtil::IsSupportFeature(1, 13);
        }));
    }
    for (auto& answer : answers)
        EXPECT_TRUE(answer.get());
    EXPECT_EQ(propertyReads, 5);
    host::setHook(nullptr);
}

TEST_F(Facade, PropertiesAreReadOnce) {
    host::setProperty("vendor.debug.lsc_mgr.otp_tbl_idx", 3);
    int index = -1;
    CustomShadingUtil::GetMultiTableIndex(index, 0);
    EXPECT_EQ(index, 3);
    host::setProperty("vendor.debug.lsc_mgr.otp_tbl_idx", 4);
    CustomShadingUtil::GetMultiTableIndex(index, 0);
    EXPECT_EQ(index, 3);
}

TEST_F(Facade, AMonitorThatIsLeftEndsWithTheObject) {
    int disabled = 0;
    test::startWith(test::millisecondSamples(0, 1));
    host::setHook([&](host::Operation operation) { disabled += operation == host::Operation::kDisableSensor; });
    test::dropCustomerObject();
    EXPECT_EQ(disabled, 1);
    host::setHook(nullptr);
}

TEST_F(Facade, WithoutMemoryGivesNeutralResultsAndTriesAgain) {
    int index = 7;
    bool supported = true;
    bool enabled = true;
    bool seamless = true;
    bool registered = true;
    {
        const test::NoMemory none;
        supported = CustomShadingUtil::IsSupportFeature(1, 0);
        enabled = CustomShadingUtil::IsEnableOisCompensation(0, 0);
        seamless = CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(0);
        registered = CustomShadingUtil::RegisterAndStartSensorMonitor(0, 1);
        CustomShadingUtil::GetMultiTableIndex(index, 0);
        CustomShadingUtil::QueryOTPInfo(&index, 1, 0);
        CustomShadingUtil::StoreRollingShutter(0, 1);
        CustomShadingUtil::UpdateSensorData(0, 1, 1);
        CustomShadingUtil::UnRegisterSensorMonitor(0);
        CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, {}, nullptr, nullptr, 0, 0);
        CustomShadingUtil::fillLscOISCompInfo(0, nullptr);
    }
    EXPECT_FALSE(supported || enabled || seamless || registered);
    EXPECT_EQ(index, 7);
    EXPECT_EQ(test::customerObject(), nullptr);
    EXPECT_TRUE(CustomShadingUtil::IsSupportFeature(1, 0));
    EXPECT_NE(test::customerObject(), nullptr);
}

struct Question {
    const char* name;
    std::int64_t (*ask)(TarvoShadingCustomUtil& object);
};

constexpr Question kQuestions[] = {
    {"IsSupportFeature", [](auto& object) { return std::int64_t{object.IsSupportFeature(2, test::kSensor)}; }},
    {"IsEnableOisCompensation",
     [](auto& object) { return std::int64_t{object.IsEnableOisCompensation(test::kSensor, 0)}; }},
    {"IsSupportSeamlessSwitchForRemosaic",
     [](auto& object) { return std::int64_t{object.IsSupportSeamlessSwitchForRemosaic(test::kSensor)}; }},
    {"IsEnabled", [](auto& object) { return std::int64_t{object.IsEnabled(test::kSensor)}; }},
    {"QueryRollingShutter", [](auto& object) { return std::int64_t{object.QueryRollingShutter(test::kSensor)}; }},
};

TEST_F(Facade, WithoutItsLockAQuestionIsAnsweredNo) {
    if (!test::kLocksFail) GTEST_SKIP() << "Under the thread sanitizer no lock fails.";
    host::setSensor(test::kSensor, test::calibratedSensor());
    host::setCameraMode("high_pixel_mode");
    test::startWith(test::millisecondSamples(test::kMs, 100));
    TarvoShadingCustomUtil& object = *test::customerObject();
    for (const auto& [name, ask] : kQuestions) {
        const test::FaultAt armed(test::Fault::kLock, 0, test::Repeat::kOnce);
        EXPECT_EQ(ask(object), 0) << name;
        EXPECT_TRUE(armed.struck()) << name;
        EXPECT_EQ(ask(object) != 0, name != std::string_view("IsEnableOisCompensation")) << name;
    }
}

TEST_F(Facade, ColourSensorCallsNeedNoObject) {
    NSCam::IMetadata metadata;
    float values[18] = {};
    CustomShadingUtil::UpdateMetaInfo(CustShadingType::kColorSensorInfo, reinterpret_cast<long>(&metadata), values);
    CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, reinterpret_cast<long>(&metadata), values);
    EXPECT_EQ(test::customerObject(), nullptr);
}

TEST_F(Facade, NullPointersAreSurvivedInSilence) {
    host::setSensor(test::kSensor, test::calibratedSensor());
    test::startWith(test::millisecondSamples(test::kMs, 100));
    host::setLogSwitches(1, test::kAllDetails, test::kAllModules);
    test::LogCapture log;
    std::vector<double> x;
    float values[18] = {};
    CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, {}, nullptr, &x, 0, test::kSensor);
    CustomShadingUtil::CalcOISValue(CustShadingType::kFrame, {}, &x, nullptr, 0, test::kSensor);
    CustomShadingUtil::fillLscOISCompInfo(test::kSensor, nullptr);
    unsigned char record[72] = {};
    CustomShadingUtil::ConvertColorSensorInfo(CustShadingType::kFrame, 0, reinterpret_cast<long>(record));
    CustomShadingUtil::ConvertColorSensorInfo(CustShadingType::kFrame, reinterpret_cast<long>(record), 0);
    CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, 0, values);
    CustomShadingUtil::UpdateMetaInfo(CustShadingType::kColorSensorInfo, 0, values);
    EXPECT_THAT(log.take(), IsEmpty());
    CustomShadingUtil::IsSupportFeature(2, test::kSensor);
    log.take();
    CustomShadingUtil::QueryOTPInfo(nullptr, 4, test::kSensor);
    EXPECT_THAT(log.take(), IsEmpty());
    CustomShadingUtil::QueryOTPInfo(nullptr, 0, test::kSensor);
    EXPECT_EQ(log.take().size(), 1U);  // nothing to copy, and nowhere to: the answer is 0 bytes
}

}  // namespace
