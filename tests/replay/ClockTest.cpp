#include "tools/report/Clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace {

using replay::Clock;

constexpr std::int64_t kUs = 1000;
constexpr std::uint64_t kFrameNs = 16'666'667;

// A clock with these differences in us, frame by frame.
template <typename Difference>
Clock clockWith(Difference differenceUs, int frames = 5000) {
    Clock clock;
    for (int i = 0; i < frames; ++i)
        clock.add(static_cast<std::uint64_t>(i) * kFrameNs, differenceUs(i) * kUs);
    return clock;
}

TEST(Clock, DifferencesOfBothSignsAreInOrder) {
    const Clock clock = clockWith([](int i) { return (i * 7) % 101 - 60; }, 101);
    EXPECT_EQ(clock.quantileUs(0), -60);
    EXPECT_EQ(clock.quantileUs(0.5), -10);
    EXPECT_EQ(clock.quantileUs(1), 40);
    EXPECT_FALSE(clockWith([](int i) { return i; }, 10).drift());
}

TEST(Clock, TheWholeRangeOfTimeFits) {
    Clock clock;
    clock.add(0, std::numeric_limits<std::int64_t>::min());
    clock.add(1, std::numeric_limits<std::int64_t>::max());
    EXPECT_LE(std::abs(clock.quantileUs(0) - std::numeric_limits<std::int64_t>::min() / kUs), 1);
    EXPECT_LE(std::abs(clock.quantileUs(1) - std::numeric_limits<std::int64_t>::max() / kUs), 1);
}

TEST(Clock, ADriftIsFoundBesideLateHandOvers) {
    const Clock clock = clockWith([](int i) { return i + (i * 7 % 10 == 0 ? 30'000 : 0); });
    ASSERT_TRUE(clock.drift());
    EXPECT_TRUE(clock.drift()->steady);
    EXPECT_NEAR(clock.drift()->ppm, 60, 1);
    EXPECT_NEAR(clock.drift()->totalUs, 5000, 100);
}

TEST(Clock, AStepIsNoDrift) {
    const Clock clock = clockWith([](int i) { return (i < 2000 ? 0 : 20'000) + i % 7; });
    ASSERT_TRUE(clock.drift());
    EXPECT_FALSE(clock.drift()->steady);
}

}  // namespace
