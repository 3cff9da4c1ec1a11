// Batches and the search among buffered samples, against the plainest code that does the same.
#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <random>

#include "customer/aaa/aaa/lsc/SampleBatch.h"
#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "customer/aaa/aaa/lsc/SampleWindow.h"
#include "tests/support/Scene.h"

namespace {

using lsc::BatchRelation;
using lsc::Samples;
using test::sample;
using test::stamps;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

Samples at(const std::vector<std::int64_t>& times) {
    Samples samples;
    for (const std::int64_t time : times)
        samples.push_back(sample(time));
    return samples;
}

TEST(SampleBatch, SortsBySignedTimeAndKeepsTheOrderOfEqualStamps) {
    Samples samples = {sample(5, 1), sample(-3, 2), sample(5, 3), sample(kMin, 4), sample(0, 5)};
    lsc::sortByTime(samples);
    std::vector<float> order;
    for (const auto& data : samples)
        order.push_back(data.oisX);
    EXPECT_THAT(order, ElementsAre(4, 2, 5, 1, 3));
}

TEST(SampleBatch, RelationLooksAtTheBeginOfTheNewerBatch) {
    const Samples older = at({10, 20, 30});
    EXPECT_EQ(lsc::relationOf(older, at({30})), BatchRelation::kFollows);
    EXPECT_EQ(lsc::relationOf(older, at({29})), BatchRelation::kOverlaps);
    EXPECT_EQ(lsc::relationOf(older, at({11})), BatchRelation::kOverlaps);
    EXPECT_EQ(lsc::relationOf(older, at({10, 50})), BatchRelation::kStale);
    EXPECT_EQ(lsc::relationOf(older, at({kMin})), BatchRelation::kStale);
}

TEST(SampleQueue, KnowsItsNewestSample) {
    lsc::SampleQueue queue(2);
    EXPECT_EQ(queue.newestNs(), std::nullopt);
    Samples batch = at({5, 7});
    queue.push(1, batch);
    EXPECT_EQ(queue.newestNs(), 7);
}

struct SplitCase {
    std::vector<std::int64_t> older, newer;
    std::int64_t splitTime;
    std::vector<std::int64_t> olderPart, newerPart;
};

TEST(SampleBatch, DividesAtTheMiddleOfTheOverlap) {
    const SplitCase cases[] = {
        {{10, 20, 30, 40}, {25, 35, 45, 55}, 32, {10, 20, 25, 30}, {35, 40, 45, 55}},
        // A sample at the split time goes to the newer side.
        {{10, 40}, {20, 30}, 30, {10, 20}, {30, 40}},
        // Toward zero, not down: -25 / 2 is -12, which is the sample's own stamp.
        {{-30, -12}, {-13, -12}, -12, {-30, -13}, {-12, -12}},
        // A negative stamp is after every other one in unsigned order, so the cut comes first.
        {{-20, 40}, {10, 50}, 25, {}, {-20, 10, 40, 50}},
        // The sum leaves 64 bits, its half does not.
        {{kMax - 9, kMax - 1}, {kMax - 5, kMax}, kMax - 3, {kMax - 9, kMax - 5}, {kMax - 1, kMax}},
        {{0, kMax}, {1, 2}, kMax / 2 + 1, {0, 1, 2}, {kMax}},
        {{kMin, 0}, {kMin + 1}, kMin / 2 + 1, {kMin, kMin + 1, 0}, {}},
        {{kMin, kMax}, {kMin + 2}, 0, {}, {kMin, kMin + 2, kMax}}};
    for (const SplitCase& c : cases) {
        const lsc::SplitBatches split = lsc::splitBatches(at(c.older), at(c.newer));
        EXPECT_EQ(split.splitTime, c.splitTime);
        EXPECT_EQ(stamps(split.older), c.olderPart);
        EXPECT_EQ(stamps(split.newer), c.newerPart);
    }
}

// Concatenates, scans and copies.
Samples windowByScan(const lsc::FrameQueue& queue, std::uint64_t time) {
    Samples all;
    for (const auto& entry : queue)
        all.insert(all.end(), entry.samples.begin(), entry.samples.end());
    std::size_t i = 0;
    while (i < all.size() && static_cast<std::uint64_t>(all[i].timestamp) < time)
        ++i;
    if (i == all.size() || all.size() < 100) return {};
    std::size_t begin = 0;
    if (i >= 50) begin = i + 50 >= all.size() ? all.size() - 100 : i - 50;
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(begin);
    return {first, first + 100};
}

Samples windowBySearch(const lsc::FrameQueue& queue, std::uint64_t time) {
    const std::size_t total = lsc::totalSamples(queue);
    const auto match = lsc::firstNotBefore(queue, time);
    return match && total >= lsc::kWindowSize ? lsc::copyWindow(queue, total, match->offset) : Samples{};
}

TEST(SampleWindow, FindsWhatAScanFinds) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const auto below = [&random](std::uint64_t bound) { return static_cast<std::int64_t>(random() % bound); };
    for (int round = 0; round < 300; ++round) {
        lsc::FrameQueue queue;
        std::int64_t time = below(3) == 0 ? -below(400) : below(50);
        for (std::int64_t frames = below(30); frames > 0; --frames) {
            Samples samples;
            for (std::int64_t count = 1 + below(20); count > 0; --count)
                samples.push_back(sample(time += below(4)));
            queue.push_back({0, samples});
        }
        for (int query = 0; query < 30; ++query) {
            const auto wanted = static_cast<std::uint64_t>(below(1200) - 400);
            ASSERT_EQ(stamps(windowBySearch(queue, wanted)), stamps(windowByScan(queue, wanted))) << wanted;
        }
    }
}

TEST(SampleWindow, HoldsTheMatchAgainstTheEnds) {
    const lsc::FrameQueue queue = {{1, test::millisecondSamples(0, 70)},
                                   {2, test::millisecondSamples(70 * test::kMs, 130)}};
    const auto firstFor = [&](std::int64_t match) {
        const auto window = windowBySearch(queue, static_cast<std::uint64_t>(match * test::kMs));
        return window.size() == 100 ? window.front().timestamp / test::kMs : -1;
    };
    EXPECT_EQ(firstFor(10), 0);
    EXPECT_EQ(firstFor(49), 0);
    EXPECT_EQ(firstFor(50), 0);
    EXPECT_EQ(firstFor(60), 10);
    EXPECT_EQ(firstFor(149), 99);
    EXPECT_EQ(firstFor(150), 100);
    EXPECT_EQ(firstFor(180), 100);
    EXPECT_EQ(firstFor(200), -1);
}

}  // namespace
