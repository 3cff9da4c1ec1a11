// The sample buffer of one sensor: what it keeps, gives and says.
#include <gmock/gmock.h>

#include <limits>

#include "customer/aaa/aaa/lsc/TarvoSensorMonitor.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"

namespace {

using lsc::Samples;
using test::sample;
using test::stamps;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kTag[] = "android 3 TarvoShadingCustomUtil: ";

class SampleBuffer : public test::HostTest {
protected:
    SampleBuffer() { host::setLogSwitches(1, test::kAllDetails, test::kAllModules); }

    // Pushes samples at these times and gives what the caller's list holds afterwards.
    std::vector<std::int64_t> push(std::uint32_t frame, const std::vector<std::int64_t>& times) {
        Samples data;
        for (const std::int64_t time : times)
            data.push_back(sample(time, static_cast<float>(frame)));
        mBuffer.pushValue(frame, data);
        return stamps(data);
    }

    std::vector<std::int64_t> held(std::uint32_t frame) {
        Samples out;
        mBuffer.getDataByFrame(frame, out);
        return stamps(out);
    }

    TarvoShadingCustomUtil::TarvoSensorData mBuffer{30, 4};
    test::LogCapture mLog;
};

TEST_F(SampleBuffer, DividesAnOverlapAnewAndGivesBackTheNewPart) {
    push(6, {10, 20, 30, 40});
    mLog.take();
    EXPECT_THAT(push(7, {55, 45, 35, 25}), ElementsAre(35, 40, 45, 55));
    EXPECT_THAT(held(6), ElementsAre(10, 20, 25, 30));
    EXPECT_THAT(held(7), ElementsAre(35, 40, 45, 55));
    const auto index = [](int i, int time) {
        return kTag + ("[pushValue] index:" + std::to_string(i) + ", timestamp:" + std::to_string(time)) +
               ", OIS_X:7.000000 OIS_Y:0.000000, oisHall_X:0.000000 oisHall_Y:0.000000";
    };
    EXPECT_THAT(mLog.take(),
                ElementsAre(index(0, 55), index(1, 45), index(2, 35), index(3, 25),
                            std::string(kTag) + "[pushValue] split data frameNumber: 7 lastData:4 data:4 splitTime:32",
                            std::string(kTag) + "[pushValue] F:(7) dataSize:4 start-end(35-55)"));
}

TEST_F(SampleBuffer, DropsAStaleBatchWithoutAWord) {
    push(1, {10, 20});
    mLog.take();
    EXPECT_THAT(push(2, {30, 10}), ElementsAre(10, 30));
    EXPECT_EQ(mBuffer.frameCount(), 1U);
    EXPECT_EQ(mLog.take().size(), 2U);  // the two samples received
}

TEST_F(SampleBuffer, KeepsAnEntryOnlyForASideThatHoldsSamples) {
    push(1, {-20, 40});
    EXPECT_THAT(push(2, {10, 50}), ElementsAre(-20, 10, 40, 50));
    EXPECT_EQ(mBuffer.frameCount(), 1U);
    EXPECT_THAT(held(1), IsEmpty());
}

TEST_F(SampleBuffer, KeepsNoEntryForABatchThatGoesToTheOlderSide) {
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    push(3, {kMin, 0});
    EXPECT_THAT(push(4, {kMin + 1}), IsEmpty());
    EXPECT_EQ(mBuffer.frameCount(), 1U);
    EXPECT_THAT(held(3), ElementsAre(kMin, kMin + 1, 0));
}

TEST_F(SampleBuffer, AStampAtTheEndOf64BitsDoesNotSwallowLaterBatches) {
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    push(1, {10, kMax});
    for (std::uint32_t frame = 2; frame < 20; ++frame)
        push(frame, {frame * 10, frame * 10 + 9});
    EXPECT_THAT(held(1), ElementsAre(10, 20, 29));
    EXPECT_THAT(held(2), ElementsAre(kMax));
    EXPECT_EQ(mBuffer.frameCount(), 2U);
}

TEST(SampleBufferBound, DropsTheOldestSamplesAndSaysSoOnce) {
    TarvoShadingCustomUtil::TarvoSensorData buffer{30, 0};
    host::setLogSwitches(1, 0, 0);
    test::LogCapture log;
    const auto millions = [&buffer](std::uint32_t frame, std::int64_t first, int count) {
        Samples batch = test::millisecondSamples(first * test::kMs, count);
        buffer.pushValue(frame, batch);
    };
    const auto first = [&buffer](std::uint32_t frame) {
        Samples out;
        buffer.getDataByFrame(frame, out);
        return out.empty() ? -1 : out.front().timestamp / test::kMs;
    };
    constexpr int kLimit = 1 << 20;
    millions(1, 0, 5);
    millions(2, 5, kLimit - 5);
    EXPECT_THAT(log.take(), IsEmpty());
    millions(3, kLimit, 5);
    EXPECT_EQ(first(1), -1);
    EXPECT_EQ(first(2), 5);
    EXPECT_EQ(buffer.frameCount(), 2U);
    EXPECT_THAT(log.take(), ElementsAre(testing::HasSubstr("[pushValue] more than 1048576 samples buffered")));
    millions(4, kLimit + 5, 2);
    EXPECT_EQ(first(2), 7);
    EXPECT_THAT(log.take(), IsEmpty());
    millions(5, 2 * kLimit, 2 * kLimit + 3);
    EXPECT_EQ(buffer.frameCount(), 1U);
    EXPECT_EQ(first(5), 3 * kLimit + 3);
    EXPECT_THAT(log.take(), IsEmpty());
    buffer.clear();
    millions(6, 0, kLimit + 1);
    EXPECT_EQ(log.take().size(), 1U);
    host::reset();
}

TEST_F(SampleBuffer, KeepsThirtyFrames) {
    for (std::uint32_t frame = 1; frame <= 31; ++frame)
        push(frame, {frame});
    EXPECT_EQ(mBuffer.frameCount(), 30U);
    EXPECT_THAT(held(1), IsEmpty());
    EXPECT_THAT(held(2), ElementsAre(2));
    push(32, {});
    EXPECT_EQ(mBuffer.frameCount(), 30U);
    mBuffer.clear();
    EXPECT_EQ(mBuffer.frameCount(), 0U);
}

TEST_F(SampleBuffer, GivesTheNewestEntryOfAFrameNumber) {
    push(7, {10});
    push(7, {20, 30});
    push(8, {40});
    EXPECT_THAT(held(7), ElementsAre(20, 30));
    Samples out = {sample(1)};
    mBuffer.getDataByFrame(9, out);
    EXPECT_THAT(stamps(out), ElementsAre(1));
}

TEST_F(SampleBuffer, NeedsAHundredSamplesAndOneThatIsNotBefore) {
    Samples data = test::millisecondSamples(0, 99);
    mBuffer.pushValue(1, data);
    Samples out = {sample(1)};
    mLog.take();
    mBuffer.getDataByTimestamp(1, out);
    EXPECT_THAT(mLog.take(), ElementsAre(std::string(kTag) + "[getDataByTimestamp] total data size:99",
                                         "android 6 TarvoShadingCustomUtil: [getDataByTimestamp] no data matched !!! "
                                         "(getDataByTimestamp){#LINE:TarvoShadingCustomUtil}"));
    data = test::millisecondSamples(99 * test::kMs, 1);
    mBuffer.pushValue(2, data);
    mBuffer.getDataByTimestamp(99 * test::kMs + 1, out);
    EXPECT_EQ(out.size(), 1U);
    mLog.take();
    mBuffer.getDataByTimestamp(60 * test::kMs, out);
    EXPECT_EQ(out.size(), 100U);
    EXPECT_EQ(mLog.take().back(), std::string(kTag) + "[getDataByTimestamp] match data offset:60 timestamp:60000000");
}

}  // namespace
