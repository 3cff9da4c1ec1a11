// The player's own account of the buffers, which reasons are told from, against the buffers of the library.
#include "tools/replay/SampleAccount.h"

#include <gtest/gtest.h>

#include <random>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "tests/support/Scene.h"

namespace {

using replay::TakenBatch;
using test::kSensor;

constexpr auto kType = static_cast<NSCam::Utils::eSensorType>(test::kHallType);

// Counts what became of batches.
class Fates : public replay::Observer {
public:
    void monitorStarted(std::int32_t /*sensor*/) override { ++started; }
    void batchTaken(const TakenBatch& batch) override { ++of[static_cast<std::size_t>(batch.fate)]; }
    void exposureAsked(const replay::ExposureOutcome& /*outcome*/) override {}

    std::size_t count(TakenBatch::Fate fate) const { return of[static_cast<std::size_t>(fate)]; }

    int started = 0;
    std::size_t of[4] = {};
};

class Account : public test::HostTest {
protected:
    Account() {
        CustomShadingUtil::RegisterAndStartSensorMonitor(kSensor, test::kHallType);
        mAccount.registered(kSensor, kType);
        mAccount.started(kSensor);
    }
    ~Account() override { CustomShadingUtil::UnRegisterSensorMonitor(kSensor); }

    void update(std::uint32_t frame, const lsc::Samples& samples) {
        host::deliverSamples(kType, samples);
        mAccount.delivered(kType, samples);
        mAccount.watch(kSensor, frame, [frame] { CustomShadingUtil::UpdateSensorData(kSensor, frame, 0); });
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

    Fates mFates;
    std::vector<replay::Observer*> mObservers = {&mFates};
    replay::SampleAccount mAccount{mObservers};
};

TEST_F(Account, HoldsWhatTheLibraryHolds) {
    std::mt19937 random(5);
    std::int64_t time = -3 * test::kMs;  // the first time stamps are negative
    for (std::uint32_t frame = 1; frame <= 400; ++frame) {
        lsc::Samples samples;
        // Batches overlap the one before, follow it, or begin before it.
        std::int64_t stamp = time + static_cast<std::int64_t>(random() % 20) * test::kMs - 9 * test::kMs;
        for (auto left = random() % 12; left > 0; --left)
            samples.push_back(test::sample(stamp += static_cast<std::int64_t>(random() % 3) * test::kMs));
        if (!samples.empty()) time = std::max(time, stamp);
        update(frame, samples);
        ASSERT_EQ(mAccount.buffered(kSensor), heldByLibrary(frame)) << "seed 5, frame " << frame;
    }
    for (const auto fate :
         {TakenBatch::Fate::kFiled, TakenBatch::Fate::kSplit, TakenBatch::Fate::kDiscarded, TakenBatch::Fate::kEmpty}) {
        EXPECT_GT(mFates.count(fate), 10U);
    }
}

TEST_F(Account, BeginsAnewWithTheMonitor) {
    update(1, test::millisecondSamples(1, 10));
    EXPECT_EQ(mAccount.newestNs(kSensor), 1 + 9 * test::kMs);
    mAccount.started(kSensor);  // runs already
    EXPECT_EQ(mAccount.buffered(kSensor), 10U);
    mAccount.unregistered(kSensor);
    EXPECT_FALSE(mAccount.isRegistered(kSensor));
    EXPECT_EQ(mAccount.newestNs(kSensor), std::nullopt);
    mAccount.registered(kSensor, kType);
    mAccount.started(kSensor);
    EXPECT_EQ(mAccount.buffered(kSensor), 0U);
    EXPECT_EQ(mFates.started, 2);
}

}  // namespace
