// Figures of a session, and what they say would help.
#include "tools/report/Statistics.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/support/Scene.h"
#include "tools/report/Findings.h"

namespace {

using replay::Reason;
using replay::SensorStatistics;
using test::kMs;
using Fate = lsc::SampleQueue::Fate;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Figures : public testing::Test {
protected:
    void take(const std::vector<std::int64_t>& timesMs, Fate fate = Fate::kFiled) {
        lsc::Samples samples;
        for (const std::int64_t ms : timesMs)
            samples.push_back(test::sample(ms * kMs));
        mStatistics.handedOver({mSensor, mFrame, samples, {fate}, mFrameNs});
    }

    void takeAt(std::int64_t frameMs, const std::vector<std::int64_t>& timesMs) {
        mFrameNs = static_cast<std::uint64_t>(frameMs * kMs);
        take(timesMs);
        ++mFrame;
    }

    void miss(Reason::Kind kind, std::uint64_t number = 0, std::uint64_t startMs = 0) {
        replay::ExposureOutcome outcome;
        if (startMs != 0) {
            outcome.times.emplace();
            outcome.times->sofNs = startMs * kMs;
            outcome.times->startUs = startMs * 1000;
        }
        outcome.sensor = mSensor;
        outcome.reason = replay::detailedReason(kind, "detail", number);
        mStatistics.exposuresAsked({outcome});
    }

    // With a sensor that has no figures yet.
    void startOver() { ++mSensor; }

    const SensorStatistics& sensor() const { return mStatistics.sensors().at(mSensor); }
    std::vector<std::string> advice() const {
        std::vector<std::string> lines;
        for (const replay::Finding& finding : replay::findings(mSensor, sensor()))
            lines.push_back(replay::adviceOf(finding));
        return lines;
    }

    replay::Statistics mStatistics;
    std::int32_t mSensor = 0;
    std::uint32_t mFrame = 1;
    std::uint64_t mFrameNs = 0;
};

TEST_F(Figures, PeriodsAreThoseOfNewSamplesInOrder) {
    take({1, 2, 3});
    take({2, 3, 4}, Fate::kSplit);  // two of them known
    take({1}, Fate::kDiscarded);
    take({}, Fate::kEmpty);
    take({9});
    EXPECT_EQ(sensor().periodUs.count(), 4U);
    EXPECT_EQ(sensor().periodUs.quantile(0.5), 1000U);
    EXPECT_EQ(sensor().periodUs.max(), 5000U);
    EXPECT_EQ(sensor().gaps(), 1U);
    EXPECT_EQ(sensor().filed(), 3U);
    EXPECT_EQ(sensor().batchesOf(Fate::kSplit), 1U);
    EXPECT_EQ(sensor().batchesOf(Fate::kDiscarded), 1U);
    EXPECT_EQ(sensor().batchesOf(Fate::kEmpty), 1U);
}

TEST_F(Figures, APauseOfTheMonitorIsNoGap) {
    for (mFrame = 1; mFrame <= 4; ++mFrame)
        take({mFrame});
    mStatistics.monitorStarted(mSensor);
    mFrame = 50;
    take({9000, 9001});
    EXPECT_EQ(sensor().periodUs.max(), 1000U);
    EXPECT_EQ(sensor().missingHandOvers(), 0U);
}

// A hand-over that is late and brings a gap looks like a clock that was set, until frames catch up.
TEST_F(Figures, AGapInALateHandOverIsNoStepOfTheClock) {
    for (const std::int64_t frameMs : {10, 20, 30})
        takeAt(frameMs, {frameMs + 1, frameMs + 2, frameMs + 3});
    takeAt(40, {41, 102, 103});
    takeAt(50, {104, 105});
    miss(Reason::Kind::kNoNearSample, 20'000, 60);
    EXPECT_EQ(sensor().clockSteps(), 1U);
    takeAt(100, {112});
    EXPECT_EQ(sensor().clockSteps(), 0U);
    EXPECT_THAT(advice(),
                ElementsAre(AllOf(HasSubstr("1 exposure: find out what stops"), HasSubstr("up to 61.000 ms"))));
}

TEST_F(Figures, AStepOfTheClockStaysOneWhenTheMonitorStarts) {
    for (const std::int64_t frameMs : {10, 20, 30})
        takeAt(frameMs, {frameMs + 1, frameMs + 2, frameMs + 3});
    takeAt(40, {41, 102, 103});
    mStatistics.monitorStarted(mSensor);
    takeAt(50, {51, 52});
    EXPECT_EQ(sensor().clockSteps(), 1U);
}

TEST_F(Figures, BatchesDeliveredAgainHaveNoStampOfTheFuture) {
    take({1, 2, 3});
    for (int i = 0; i < 4; ++i)
        take({1, 2}, Fate::kDiscarded);
    EXPECT_THAT(advice(), ElementsAre(HasSubstr("4 batches were discarded")));
}

TEST_F(Figures, TheWholeRangeOfTimeFits) {
    const lsc::Samples ends = {test::sample(std::numeric_limits<std::int64_t>::min()),
                               test::sample(std::numeric_limits<std::int64_t>::max())};
    mStatistics.handedOver({mSensor, 1, ends, {Fate::kFiled}});
    EXPECT_EQ(sensor().periodUs.max(), std::numeric_limits<std::uint64_t>::max() / 1000 + 1);
}

TEST_F(Figures, AdviceNamesTheCauseThatTheNumbersShow) {
    take({0, 5, 10, 15, 20});
    miss(Reason::Kind::kNoNearSample, 1700);
    EXPECT_THAT(advice(), ElementsAre(HasSubstr("at 200 Hz, 60 % of all moments")));

    startOver();
    take({0, 1, 2, 3, 40, 41});
    miss(Reason::Kind::kNoNearSample, 9000, 12);
    EXPECT_THAT(advice(), ElementsAre(HasSubstr("1 exposure: find out what stops the hall sensor or its driver: the "
                                                "samples have a gap of 37.000 ms")));

    startOver();
    take({0, 1, 2, 3});
    miss(Reason::Kind::kNoLaterSample, 800);
    miss(Reason::Kind::kNoLaterSample, 4321);
    EXPECT_THAT(advice(), ElementsAre(AllOf(HasSubstr("2 exposures"), HasSubstr("up to 4321 us before"))));

    startOver();
    miss(Reason::Kind::kOneSample, 0);
    miss(Reason::Kind::kAlreadyWritten);
    EXPECT_THAT(advice(), ElementsAre(HasSubstr("no rolling shutter is stored")));

    startOver();
    take({1, 2});
    EXPECT_THAT(advice(), IsEmpty());
}

TEST_F(Figures, AnExposureBeforeTheFirstHandOverLacksWhatThatLacks) {
    miss(Reason::Kind::kTooFewSamples);
    for (int i = 0; i < 10; ++i)
        take({}, Fate::kEmpty);
    EXPECT_THAT(advice(), ElementsAre(AllOf(HasSubstr("1 exposure: find out what stops"), HasSubstr("no hand-over"))));
}

TEST_F(Figures, TooFewSamplesAreEitherTooEarlyOrTooSlow) {
    take({0, 1, 2});
    miss(Reason::Kind::kTooFewSamples, 3);
    EXPECT_THAT(advice(), ElementsAre(HasSubstr("start the monitor earlier")));
    for (std::int64_t ms = 33; ms < 1200; ms += 33)
        take({ms});
    miss(Reason::Kind::kTooFewSamples, 30);
    EXPECT_THAT(advice(), ElementsAre(AllOf(HasSubstr("at 30 Hz"), HasSubstr("at most 30"))));
}

}  // namespace
