// The once-only OTP read of a sensor: who reads, who waits, and what a bad layout leaves.
#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <future>
#include <stdexcept>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"
#include "tests/support/Threads.h"

namespace {

using host::Operation;
using test::kSensor;
using testing::ElementsAre;

constexpr unsigned int kOisFeature = 2;

class OtpRead : public test::HostTest {
protected:
    // Counts the driver's layout reads while `atRead` runs in each.
    void watch(std::function<void()> atRead) {
        host::setHook([this, atRead = std::move(atRead)](Operation operation) {
            if (operation != Operation::kSensorCommand) return;
            ++mReads;
            atRead();
        });
    }

    std::vector<std::string> errorsOf(const host::Sensor& sensor, int id) {
        host::setSensor(id, sensor);
        host::setLogSwitches(1, 0, 0);
        test::LogCapture log;
        mUtil.IsSupportFeature(kOisFeature, id);
        return log.take();
    }

    // An error as it reaches the Android log.
    static std::string error(const std::string& function, const std::string& text) {
        return "android 6 TarvoShadingCustomUtil: [" + function + "] " + text + " (" + function +
               "){#LINE:TarvoShadingCustomUtil}";
    }
    static std::string readError(const std::string& text) { return error("ReadOTPInfo", text); }
    static std::string swapError(const std::string& text) { return error("SwapOTPInfo", text); }

    TarvoShadingCustomUtil mUtil;
    std::atomic<int> mReads = 0;
};

TEST_F(OtpRead, FirstCallerReadsAndOthersWaitForIt) {
    host::setSensor(kSensor, test::calibratedSensor());
    std::promise<void> reading;
    std::promise<void> release;
    watch([&, gate = release.get_future().share()] {
        reading.set_value();
        gate.wait();
    });
    auto first = std::async(std::launch::async, [&] { return mUtil.IsSupportFeature(kOisFeature, kSensor); });
    reading.get_future().wait();

    int index = 0;
    auto second = test::startUntilItWaits([&] { mUtil.GetMultiTableIndex(index, kSensor); });
    // Another sensor's read is independent; it finds no sensor and reads nothing.
    EXPECT_FALSE(mUtil.IsSupportFeature(kOisFeature, kSensor + 1));
    release.set_value();
    EXPECT_TRUE(first.get());
    second.get();
    EXPECT_EQ(index, 2);
    EXPECT_EQ(mReads, 1);
}

TEST_F(OtpRead, AFailedReadIsNotRepeated) {
    host::setSensor(kSensor, test::calibratedSensor());
    for (const Operation failing : {Operation::kSensorCommand, Operation::kGetOtpData}) {
        TarvoShadingCustomUtil util;
        host::setHook([failing](Operation operation) {
            if (operation == failing) throw std::runtime_error("driver");
        });
        EXPECT_FALSE(util.IsSupportFeature(kOisFeature, kSensor));
        host::setHook(nullptr);
        EXPECT_FALSE(util.IsSupportFeature(kOisFeature, kSensor));
    }
    EXPECT_EQ(host::sensorObjectCounts().created, host::sensorObjectCounts().released);
    EXPECT_TRUE(host::sensorObjectCounts().usersMatch);
}

TEST_F(OtpRead, ReadsNothingTwiceNorForAnUnknownSensor) {
    host::setSensor(kSensor, test::calibratedSensor());
    watch([] {});
    // Through a pointer: the lock that a caller must hold is out of reach here, and nobody else calls.
    const auto read = &TarvoShadingCustomUtil::ReadOTPInfo;
    (mUtil.*read)(kSensor);
    (mUtil.*read)(kSensor);
    (mUtil.*read)(14);
    (mUtil.*read)(-1);
    EXPECT_EQ(mReads, 1);
    EXPECT_TRUE(mUtil.IsSupportFeature(kOisFeature, kSensor));
}

TEST_F(OtpRead, AProviderThatIsMissingGivesNoBytesOrThrowsCountsAsNotStored) {
    const auto notStored = ElementsAre(readError("Not to stored OTPData !!!"));
    host::setOtpProviderPresent(false);
    EXPECT_THAT(errorsOf(test::calibratedSensor(), 0), notStored);
    host::setOtpProviderPresent(true);
    host::setOtpBytesNull(true);
    EXPECT_THAT(errorsOf(test::calibratedSensor(), 1), notStored);
    host::setOtpBytesNull(false);
    host::setHook([](Operation operation) {
        if (operation == Operation::kGetOtpData) throw std::runtime_error("provider");
    });
    EXPECT_THAT(errorsOf(test::calibratedSensor(), 2), notStored);
}

TEST_F(OtpRead, ABlockOutsideTheMemoryIsNotRead) {
    host::Sensor sensor = test::calibratedSensor();
    sensor.otpLayout->at(2) = 0x10000;
    EXPECT_THAT(
        errorsOf(sensor, 0),
        ElementsAre(readError("sensorId:0, multiGolden[valid:10000, gradient:1, 2] is not within 65536 bytes!!!")));
    EXPECT_TRUE(mUtil.IsSupportFeature(kOisFeature, 0));
    int index = -1;
    mUtil.GetMultiTableIndex(index, 0);
    EXPECT_EQ(index, 0);

    sensor = test::calibratedSensor();
    sensor.otpLayout->at(8) = 0x80000000;
    EXPECT_THAT(errorsOf(sensor, 1),
                ElementsAre(readError("sensorId:1, oisCalibration[offset:10, valid:8, indexNum:2147483648, "
                                      "tableNumber:5] is not within 65536 bytes!!!")));
    EXPECT_FALSE(mUtil.IsSupportFeature(kOisFeature, 1));
}

TEST_F(OtpRead, AMarkerThatIsNotOneIsReportedWhateverTheOtherWordsSay) {
    host::Sensor sensor = test::calibratedSensor();
    *sensor.otpLayout = {0, 8, 3, 0x10000, 0x10000, 0x10000, 8, 4, 0xFFFFFFFF, 0xFFFFFFFF, 1};
    EXPECT_THAT(errorsOf(sensor, 0), ElementsAre(readError("sensorId:0, multiGolden is not valid(0)!!!"),
                                                 readError("sensorId:0, oisCalibration is not valid(0)!!!")));
}

TEST_F(OtpRead, ADriverThatThrowsLeavesALayoutOfZeros) {
    host::setSensor(kSensor, test::calibratedSensor(1));
    host::setHook([](Operation operation) {
        if (operation == Operation::kSensorCommandDone) throw std::runtime_error("driver");
    });
    EXPECT_FALSE(mUtil.IsSupportFeature(kOisFeature, kSensor));
    host::setHook(nullptr);
    // The layout says how many bytes are swapped: none.
    std::array<unsigned char, 4> source = {1, 2, 3, 4};
    std::array<unsigned char, 4> table = {};
    mUtil.SwapOTPInfo(source.data(), table.data(), kSensor);
    EXPECT_THAT(table, testing::Each(0));
}

TEST_F(OtpRead, TableSizeBoundsTheCopyAndTheAnswer) {
    host::Sensor sensor = test::calibratedSensor(1);
    sensor.otpLayout->at(6) = 5;
    host::setSensor(0, sensor);
    std::array<int, 3> array;
    array.fill(-1);
    mUtil.QueryOTPInfo(array.data(), array.size(), 0);
    EXPECT_THAT(array, ElementsAre(0x09080100, -256, -1));  // the odd byte of the table is 0

    sensor.otpLayout->at(6) = 0xFFFFFFFF;
    host::setSensor(1, sensor);
    array.fill(-1);
    mUtil.QueryOTPInfo(array.data(), array.size(), 1);
    EXPECT_THAT(array, ElementsAre(0x09080100, 0x05040706, 0x0302));
    // 2^30 integers are 0 bytes in 32 bits.
    array.fill(-1);
    mUtil.QueryOTPInfo(array.data(), 1UL << 30, 1);
    EXPECT_THAT(array, testing::Each(-1));
}

TEST_F(OtpRead, SwapWritesTheWholeTableOfAKnownLayout) {
    host::setSensor(kSensor, test::calibratedSensor(1));
    mUtil.IsSupportFeature(kOisFeature, kSensor);
    std::array<unsigned char, 10> source = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    std::array<unsigned char, 12> table = {};
    mUtil.SwapOTPInfo(source.data(), table.data(), kSensor);
    EXPECT_THAT(table, ElementsAre(0, 1, 8, 9, 6, 7, 4, 5, 2, 3, 0, 0));
    host::setLogSwitches(1, 0, 0);
    test::LogCapture log;
    mUtil.SwapOTPInfo(nullptr, table.data(), kSensor);
    mUtil.SwapOTPInfo(source.data(), nullptr, kSensor);
    mUtil.SwapOTPInfo(source.data(), table.data(), 14);
    mUtil.SwapOTPInfo(source.data(), table.data(), -1);
    EXPECT_EQ(table[2], 8);
    EXPECT_THAT(log.take(),
                ElementsAre(swapError("sensorId:1, source or destination is null !!!"),
                            swapError("sensorId:1, source or destination is null !!!"),
                            swapError("sensorId(14) is invalid !!!"), swapError("sensorId(-1) is invalid !!!")));

    host::Sensor sensor = test::calibratedSensor(1);
    sensor.otpLayout->at(8) = 0x80000000;
    host::setSensor(0, sensor);
    mUtil.IsSupportFeature(kOisFeature, 0);
    log.take();
    mUtil.SwapOTPInfo(source.data(), table.data(), 0);
    EXPECT_EQ(table[10], 0);
    EXPECT_THAT(log.take(), ElementsAre(swapError("sensorId:0, oisCalibration[indexNum:2147483648, tableNumber:5] is "
                                                  "not within 65536 bytes!!!")));
}

TEST_F(OtpRead, ATableMayFillTheWholeMemoryAndNoMore) {
    std::vector<unsigned char> source(lsc::kOtpMemorySize + 2, 7);
    for (const auto& [rows, last] : {std::pair{0x8000U, 7}, {0x8001U, 0}}) {
        host::Sensor sensor = test::calibratedSensor(1);
        sensor.otpLayout->at(8) = rows;
        sensor.otpLayout->at(9) = 1;
        host::setSensor(static_cast<int>(rows & 1), sensor);
        mUtil.IsSupportFeature(kOisFeature, static_cast<int>(rows & 1));
        std::vector<unsigned char> table(source.size());
        mUtil.SwapOTPInfo(source.data(), table.data(), static_cast<int>(rows & 1));
        EXPECT_EQ(table[lsc::kOtpMemorySize - 1], last);
    }
}

}  // namespace
