// Whose hand-overs are: by the lists of calculations, by what continues what.
#include <gtest/gtest.h>

#include "tools/import/Attribution.h"
#include "tools/import/Votes.h"

namespace {

using namespace replay::import;

constexpr std::int64_t kMs = 1000000;  // ns

HandOver batch(std::uint32_t frame, std::int64_t firstMs, float x, std::size_t queue, std::size_t lane = 0) {
    HandOver made;
    made.lane = lane;
    for (std::int64_t i = 0; i < 10; ++i) {
        NSCam::Utils::SensorData sample = {};
        sample.timestamp = (firstMs + i) * kMs;
        sample.oisX = x + static_cast<float>(i % 3);
        made.samples.push_back(sample);
    }
    made.filed = BatchFiled{frame, 10, 0, 0};
    made.updated = BatchUpdated{frame, 0, 10, queue, 0, 0};
    return made;
}

// What a calculation of the sensor lists: 1 ms apart from `firstMs` on.
Exposure listing(std::int32_t sensor, std::int64_t firstMs, float x) {
    Exposure made;
    made.calculation = Calculation{sensor, 1, 30, 0, 0, 0};
    made.line = 100;
    for (std::int64_t i = 0; i < 30; ++i)
        made.listing.push_back({(firstMs + i) * 1000, x + static_cast<float>(i % 10 % 3), 0});
    return made;
}

class Cameras : public testing::Test {
protected:
    Cameras() {
        attribution.registered(0, 5);
        attribution.registered(1, 5);
    }
    // The sensor that a hand-over is taken for; -1 for none, 100 more where others are as likely.
    int taken(const HandOver& its) {
        const auto choice = attribution.choose(its, ahead);
        if (!choice.sensor) return -1;
        attribution.filed(*choice.sensor, its);
        return *choice.sensor + (choice.sure ? 0 : 100);
    }
    HandOver voted(HandOver its, const Exposure& exposure) {
        Timeline timeline;
        timeline.add(1, its);
        vote(exposure, timeline);
        return std::get<HandOver>(timeline.take().data);
    }

    Attribution attribution;
    Timeline ahead;
};

TEST_F(Cameras, AreToldByWhatTheirCalculationsList) {
    EXPECT_EQ(taken(voted(batch(1, 10, 3, 1), listing(1, 5, 3))), 0);  // 1 lists other samples of that time
    EXPECT_EQ(taken(voted(batch(1, 10, 3, 1), listing(1, 0, 3))), 1);
    attribution.unregistered(0);
    EXPECT_EQ(taken(voted(batch(2, 20, 9, 2), listing(1, 0, 3))), -1);  // of a sensor that nothing names
}

TEST_F(Cameras, GoOnWhereTheyWere) {
    EXPECT_EQ(taken(voted(batch(1, 0, 3, 1, 1), listing(1, 0, 3))), 1);
    EXPECT_EQ(taken(voted(batch(1, 0, 70, 1, 1), listing(0, 0, 70))), 0);
    for (std::uint32_t i = 2; i < 6; ++i) {
        EXPECT_EQ(taken(batch(i, 10 * i - 10, 70, i, 1)), 0);
        EXPECT_EQ(taken(batch(i, 10 * i - 10, 3, i, 1)), 1);
    }
    // Frame numbers of their own, a thread of its own.
    EXPECT_EQ(taken(batch(6, 50, 3, 6, 1)), 1);
}

TEST_F(Cameras, ThatNothingTellsApartAreSaidToBe) {
    EXPECT_EQ(taken(batch(1, 0, 3, 1)), 100);
    ahead.add(2, voted(batch(2, 10, 3, 2), listing(1, 0, 3)));
    attribution = {};
    attribution.registered(0, 5);
    attribution.registered(1, 5);
    EXPECT_EQ(taken(batch(1, 0, 3, 1)), 1);  // the next one continues it, and that is listed
}

TEST_F(Cameras, WithoutSamplesShowInTheNextNumber) {
    EXPECT_EQ(taken(voted(batch(1, 0, 3, 1), listing(1, 0, 3))), 1);
    EXPECT_EQ(taken(voted(batch(1, 0, 70, 1), listing(0, 0, 70))), 0);
    ahead.add(4, batch(2, 10, 3, 2));
    ahead.add(5, batch(3, 10, 70, 2));
    HandOver empty;
    empty.emptyType = 5;
    EXPECT_EQ(taken(empty), 0);
    empty.emptyType = 6;
    EXPECT_EQ(taken(empty), -1);
}

TEST_F(Cameras, WithoutSamplesAreTheirThreadsWhereNoNumberTells) {
    EXPECT_EQ(taken(voted(batch(1, 0, 3, 1, 1), listing(1, 0, 3))), 1);
    EXPECT_EQ(taken(voted(batch(1, 0, 70, 1, 2), listing(0, 0, 70))), 0);
    HandOver empty;
    empty.emptyType = 5;
    for (const auto& [lane, expected] : {std::pair{1U, 1}, {2U, 0}, {3U, 100}}) {
        empty.lane = lane;
        EXPECT_EQ(taken(empty), expected) << "thread " << lane;
    }
}

TEST_F(Cameras, WithoutSamplesAreTheirThreadsWhateverNumbersSay) {
    HandOver empty;
    empty.emptyType = 5;
    empty.lane = 2;
    EXPECT_EQ(taken(voted(batch(1, 0, 3, 1, 1), listing(1, 0, 3))), 1);
    for (std::uint32_t i = 0; i < 6; ++i)
        ahead.add(i, voted(batch(i + 2, 10 * i, 70, i + 1, 2), listing(0, 10 * i, 70)));
    ahead.add(9, voted(batch(4, 30, 3, 4, 1), listing(1, 30, 3)));  // skips 2
    EXPECT_EQ(taken(empty), 0);                                     // its first one
}

TEST_F(Cameras, WithoutSamplesAreMissingNowhere) {
    EXPECT_EQ(taken(voted(batch(1, 0, 3, 1), listing(1, 0, 3))), 1);
    EXPECT_EQ(taken(voted(batch(1, 0, 70, 1), listing(0, 0, 70))), 0);
    HandOver empty;
    empty.emptyType = 5;
    ahead.add(2, voted(batch(3, 20, 3, 2), listing(1, 20, 3)));
    ahead.add(3, empty);
    ahead.add(4, voted(batch(3, 20, 70, 2), listing(0, 20, 70)));
    EXPECT_EQ(taken(empty), 1);  // there is no other for what its next number skips
    ahead.take();
    EXPECT_EQ(taken(voted(batch(3, 20, 3, 2), listing(1, 20, 3))), 1);
    ahead.take();
    EXPECT_EQ(taken(empty), 0);
    EXPECT_EQ(taken(empty), 1);  // the number of the other one skips no more
}

TEST_F(Cameras, AreNeverSureWithMoreMonitorsThanADeviceHasCameras) {
    for (std::int32_t sensor = 2; sensor < 1000; ++sensor)
        attribution.registered(sensor, 5);
    EXPECT_GE(taken(batch(1, 100, 5, 1)), 100);
    EXPECT_EQ(taken(voted(batch(1, 100, 5, 1), listing(999, 100, 5))), 999);
}

}  // namespace
