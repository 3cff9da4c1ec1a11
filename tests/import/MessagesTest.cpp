// The library's messages as events: whole ones, cut ones, and bytes of any kind.
#include <gmock/gmock.h>

#include <string>

#include "tools/import/Messages.h"

namespace {

using namespace replay::import;

constexpr char kSample[] =
    "[pushValue] index:3, timestamp:1000000000, OIS_X:-0.500000 OIS_Y:inf, oisHall_X:2048.000000 oisHall_Y:-nan";

TEST(Messages, GiveASampleWithItsDigits) {
    const Event event = parseMessage(kSample);
    const auto* const sample = std::get_if<SampleReceived>(&event);
    ASSERT_NE(sample, nullptr);
    EXPECT_EQ(sample->index, 3u);
    EXPECT_EQ(sample->timestamp, 1000000000u);
    EXPECT_EQ(sample->oisX.text, "-0.500000");
    EXPECT_EQ(sample->oisY.text, "inf");
    EXPECT_EQ(sample->hallX.text, "2048.000000");
    EXPECT_EQ(sample->hallY.text, "-nan");
}

TEST(Messages, CutAnywhereAreUnreadable) {
    const std::string whole(kSample);
    const std::string result =
        "[CalcOISValue] sensorId = 0, frameId = 0, mOisCalCMode = 0, out_frame_ois_size(2, 2), out_frame_ois0(x = "
        "-12.345678, y=3.200000), out_frame_ois1(x = 0.000000, y=0.000000)";
    for (const std::string& text : {whole, result}) {
        ASSERT_FALSE(std::holds_alternative<Unreadable>(parseMessage(text)));
        for (std::size_t size = 0; size < text.size(); ++size) {
            EXPECT_TRUE(std::holds_alternative<Unreadable>(parseMessage(text.substr(0, size)))) << size;
        }
    }
}

TEST(Messages, LoseTheSiteOfAnError) {
    const Event event = parseMessage("[updateSensorData] no sensor data for type -7 (updateSensorData){#423:a/b.cpp}");
    ASSERT_TRUE(std::holds_alternative<BatchEmpty>(event));
    EXPECT_EQ(std::get<BatchEmpty>(event).type, -7);
}

TEST(Messages, GiveTheOtpLayoutInItsBases) {
    const Event event = parseMessage(
        "[ReadOTPInfo] sensorId:1 multiGolden[offset:10, size:-1, valid:ff, gradient:11, 12] oisCalibration[offset:30, "
        "size:108, valid:20, indexNum:6, tableNumber:9]");
    ASSERT_TRUE(std::holds_alternative<OtpLayout>(event));
    EXPECT_THAT(std::get<OtpLayout>(event).multiGolden, testing::ElementsAre(16, 4294967295u, 255, 17, 18));
    EXPECT_THAT(std::get<OtpLayout>(event).oisCalibration, testing::ElementsAre(48, 108, 32, 6, 9));
}

TEST(Messages, OutOfRangeOrWithMoreAreUnreadable) {
    for (const char* text : {"[disableSensor] disable sensorType 2147483648", "[disableSensor] disable sensorType +5",
                             "[disableSensor] disable sensorType 5 ", "[disableSensor] disable sensorType ",
                             "[StoreRollingShutter] sensorId:0, rolling_shutter:-1 sensorMode:0", "disableSensor", "[",
                             "[fillLscOISCompInfo] oisValue has been writte"}) {
        EXPECT_TRUE(std::holds_alternative<Unreadable>(parseMessage(text))) << text;
    }
}

TEST(Messages, OfOtherFunctionsAreOther) {
    EXPECT_TRUE(std::holds_alternative<Other>(parseMessage("[init] dummy(0), eSensorDev(1), i4SensorIdx(0)")));
    EXPECT_TRUE(std::holds_alternative<Other>(parseMessage("[CalcOISValue] Unknown type 3")));
}

}  // namespace
