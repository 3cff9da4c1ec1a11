#include "tools/report/Histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using replay::Histogram;

TEST(Histogram, SmallNumbersAreExact) {
    Histogram histogram;
    for (std::uint64_t value = 0; value < 2048; ++value)
        histogram.add(value);
    for (std::uint64_t rank : {1U, 2U, 1024U, 1025U, 2047U, 2048U})
        EXPECT_EQ(histogram.quantile(static_cast<double>(rank) / 2048.0), rank - 1);  // powers of two divide exactly
    EXPECT_EQ(histogram.quantile(0.0), 0U);
    EXPECT_EQ(histogram.countAbove(2000), 47U);
}

TEST(Histogram, LargeNumbersAreWithinOnePartInAThousand) {
    std::mt19937_64 random(20240229);
    std::vector<std::uint64_t> values;
    Histogram histogram;
    for (int i = 0; i < 10001; ++i) {
        values.push_back(random() >> (random() % 64));
        histogram.add(values.back());
    }
    std::ranges::sort(values);
    for (const std::size_t rank : {1U, 3000U, 5001U, 9901U, 10000U}) {
        const auto exact = static_cast<double>(values[rank - 1]);
        const auto found = static_cast<double>(histogram.quantile((static_cast<double>(rank) - 0.5) / 10001.0));
        EXPECT_NEAR(found, exact, exact / 1024) << rank;
    }
    EXPECT_EQ(histogram.max(), values.back());
    EXPECT_LE(histogram.quantile(1.0), histogram.max());
}

TEST(Histogram, TheLargestNumberOfAllFits) {
    Histogram histogram;
    histogram.add(UINT64_MAX);
    EXPECT_EQ(histogram.max(), UINT64_MAX);
    EXPECT_GE(histogram.quantile(0.5), UINT64_MAX - UINT64_MAX / 1024);
    EXPECT_EQ(histogram.countAbove(UINT64_MAX / 2), 1U);
}

TEST(Histogram, WithoutNumbersEverythingIsZero) {
    const Histogram histogram;
    EXPECT_EQ(histogram.quantile(0.5), 0U);
    EXPECT_EQ(histogram.max(), 0U);
    EXPECT_EQ(histogram.countAbove(0), 0U);
}

}  // namespace
