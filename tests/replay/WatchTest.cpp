// What observers hear of a session, and the watch's own account of the buffers, which reasons are told from, against
// the buffers of the library.
#include "tools/diagnose/Watch.h"

#include <gmock/gmock.h>

#include <random>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tests/support/Scene.h"
#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"

namespace {

using test::kMs;
using test::kSensor;
using testing::ElementsAre;
using testing::IsEmpty;
using Fate = lsc::SampleQueue::Fate;

constexpr auto kType = static_cast<NSCam::Utils::eSensorType>(test::kHallType);

// Keeps what it hears.
class Ear : public replay::Observer {
public:
    explicit Ear(bool diagnosing = true) : mDiagnosing(diagnosing) {}

    bool wantsDiagnosis() const override { return mDiagnosing; }
    void monitorStarted(std::int32_t /*sensor*/) override { ++started; }
    void handedOver(const replay::HandOver& handOver) override {
        ++fates[handOver.filing.fate];
        newest = test::stamps(handOver.samples);
        timestampNs = handOver.timestampNs;
    }
    void exposuresAsked(const std::vector<replay::ExposureOutcome>& outcomes) override { calls.push_back(outcomes); }

    int started = 0;
    std::map<Fate, int> fates;
    std::vector<std::int64_t> newest;
    std::uint64_t timestampNs = 0;
    std::vector<std::vector<replay::ExposureOutcome>> calls;

private:
    const bool mDiagnosing;
};

class WatchTest : public test::HostTest {
protected:
    WatchTest() {
        host::setSensor(kSensor, test::calibratedSensor());
        CustomShadingUtil::RegisterAndStartSensorMonitor(kSensor, test::kHallType);
        CustomShadingUtil::StoreRollingShutter(kSensor, test::kMode);
        mWatch.monitorRegistered(kSensor);
        mWatch.monitorStarted(kSensor);
    }
    ~WatchTest() override { CustomShadingUtil::UnRegisterSensorMonitor(kSensor); }

    void update(std::uint32_t frame, const lsc::Samples& samples) {
        host::deliverSamples(kType, samples);
        mWatch.update(kSensor, frame, frame * kMs, [frame] { CustomShadingUtil::UpdateSensorData(kSensor, frame, 0); });
    }

    void ask(replay::Watch& watch, NSCam::IMetadata metadata) {
        watch.frame(kSensor, &metadata, [&] { CustomShadingUtil::fillLscOISCompInfo(kSensor, &metadata); });
    }

    // Samples that the library gives for the frames up to `frame`, which must differ.
    static std::size_t heldByLibrary(std::uint32_t frame) {
        std::size_t count = 0;
        for (; frame > 0; --frame) {
            lsc::Samples samples;
            test::customerObject()->QuerySensorData(samples, kSensor, frame, 0);
            count += samples.size();
        }
        return count;
    }

    Ear mEar;
    std::vector<replay::Observer*> mObservers = {&mEar};
    replay::Library mLibrary;
    replay::Watch mWatch{mObservers, mLibrary};
};

TEST_F(WatchTest, HoldsWhatTheLibraryHolds) {
    std::mt19937 random(5);
    std::int64_t time = -3 * kMs;  // the first time stamps are negative
    for (std::uint32_t frame = 1; frame <= 400; ++frame) {
        lsc::Samples samples;
        // Batches overlap the one before, follow it, or begin before it.
        std::int64_t stamp = time + static_cast<std::int64_t>(random() % 20) * kMs - 9 * kMs;
        for (auto left = random() % 12; left > 0; --left)
            samples.push_back(test::sample(stamp += static_cast<std::int64_t>(random() % 3) * kMs));
        if (!samples.empty()) time = std::max(time, stamp);
        update(frame, samples);
        ASSERT_EQ(mWatch.account().buffered(kSensor), heldByLibrary(frame)) << "seed 5, frame " << frame;
    }
    for (const auto fate : {Fate::kFiled, Fate::kSplit, Fate::kDiscarded, Fate::kEmpty})
        EXPECT_GT(mEar.fates[fate], 10);
}

TEST_F(WatchTest, ObserversGetABatchWholeAndInOrder) {
    update(1, {test::sample(4 * kMs), test::sample(1 * kMs)});
    update(2, {test::sample(5 * kMs), test::sample(2 * kMs)});
    EXPECT_EQ(mEar.fates[Fate::kSplit], 1);
    EXPECT_THAT(mEar.newest, ElementsAre(2 * kMs, 5 * kMs));
}

TEST_F(WatchTest, BeginsAnewWithTheMonitor) {
    update(1, test::millisecondSamples(1, 10));
    EXPECT_EQ(mWatch.account().newestNs(kSensor), 1 + 9 * kMs);
    mWatch.monitorStarted(kSensor);  // runs already
    EXPECT_EQ(mWatch.account().buffered(kSensor), 10U);
    mWatch.monitorUnregistered(kSensor);
    EXPECT_THAT(mWatch.account().registeredSensors(), IsEmpty());
    EXPECT_EQ(mWatch.account().newestNs(kSensor), std::nullopt);
    mWatch.monitorRegistered(kSensor);
    mWatch.monitorStarted(kSensor);
    EXPECT_EQ(mWatch.account().buffered(kSensor), 0U);
    EXPECT_EQ(mEar.started, 2);
}

TEST_F(WatchTest, ExposuresOfACallComeTogether) {
    update(7, test::millisecondSamples(1000 * kMs, 150));
    EXPECT_EQ(mEar.timestampNs, 7U * kMs);
    ask(mWatch, test::multiFrame(1080 * kMs, 1300 * kMs, 2 * kMs, 2 * kMs));
    ask(mWatch, test::singleFrame(1080 * kMs, 2 * kMs));
    ASSERT_EQ(mEar.calls.size(), 2U);
    ASSERT_EQ(mEar.calls[0].size(), 2U);
    EXPECT_TRUE(mEar.calls[0][0].span);
    EXPECT_EQ(mEar.calls[0][1].frame, 7U);
    ASSERT_TRUE(mEar.calls[0][1].reason);
    EXPECT_EQ(mEar.calls[0][1].reason->kind, replay::Reason::Kind::kNoLaterSample);
    EXPECT_EQ(mEar.calls[1].size(), 1U);
}

TEST_F(WatchTest, AnExposureHasTheNumberOfItsFrame) {
    const auto frameOf = [this](std::int64_t startMs) {
        ask(mWatch, test::singleFrame(startMs * kMs, 2 * kMs));
        return mEar.calls.back().at(0).frame;
    };
    EXPECT_EQ(frameOf(20), std::nullopt);
    for (const std::uint32_t frame : {20U, 30U, 40U})
        update(frame, {});
    EXPECT_EQ(frameOf(30), 30U);
    EXPECT_EQ(frameOf(39), 30U);
    EXPECT_EQ(frameOf(10), 40U);  // none is known to be so early
}

TEST(WatchWithoutListeners, AsksTheLibraryNothing) {
    host::reset();
    test::dropCustomerObject();
    Ear ear(false);
    const std::vector<replay::Observer*> observers = {&ear};
    replay::Library library;
    replay::Watch watch(observers, library);
    NSCam::IMetadata metadata;
    bool called = false;
    watch.frame(kSensor, &metadata, [&called] { called = true; });
    EXPECT_TRUE(called);
    EXPECT_THAT(ear.calls, IsEmpty());
    EXPECT_EQ(test::customerObject(), nullptr);  // a question would have made it
}

}  // namespace
