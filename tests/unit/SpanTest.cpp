// From samples and exposure times to one lens position.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tests/support/Scene.h"

namespace {

using lsc::ActiveSamples;
using lsc::ExposureTimes;
using lsc::LensPosition;
using lsc::SpanSearch;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Entries at these times (us), the k-th at (k, -k).
ActiveSamples at(const std::vector<std::int64_t>& times) {
    ActiveSamples samples;
    for (const std::int64_t time : times) {
        const auto k = static_cast<float>(samples.count);
        samples.entries[static_cast<std::size_t>(samples.count++)] = {k, -k, time};
    }
    return samples;
}

TEST(Times, AreSelectedByType) {
    const CalcOISValueInput input = {10'999, 20'000, 30'000, 1'000, 2'000, 3'000};
    const auto startOf = [&](std::uint32_t type) {
        const auto times = lsc::selectTimes(static_cast<CustShadingType>(type), input, 7);
        return times ? static_cast<std::int64_t>(times->startUs) : -1;
    };
    EXPECT_EQ(startOf(0), 9);
    EXPECT_EQ(startOf(1), 9);
    EXPECT_EQ(startOf(4), 27);
    EXPECT_EQ(startOf(5), 18);
    EXPECT_EQ(startOf(6), 27);
    for (const std::uint32_t refused : {2U, 3U, 7U, 0xFFFFFFFFU})
        EXPECT_EQ(startOf(refused), -1) << refused;
}

TEST(Times, StartWrapsWhenTheExposureIsLongerThanTheClock) {
    const auto times = lsc::selectTimes(CustShadingType::kFrame, {1'000, 0, 0, 3'000, 0, 0}, 0);
    EXPECT_EQ(times->startUs, std::uint64_t(-2));
    EXPECT_EQ(lsc::distanceUs(times->startUs, 5), 7);
    EXPECT_EQ(lsc::distanceUs(5, -2), 7);
}

TEST(Times, OffsetFollowsTheShorterOfExposureAndShutter) {
    const auto offset = [](std::uint64_t exposureUs, std::uint32_t shutterUs) {
        return lsc::sampleTimeOffset({0, 0, exposureUs, 0, shutterUs});
    };
    EXPECT_EQ(offset(500, 900), -437);
    EXPECT_EQ(offset(900, 500), -437);
    EXPECT_EQ(offset(20'000, 0), -166);
    EXPECT_EQ(offset(20'000, 10'000), -5598);
    EXPECT_EQ(offset(std::numeric_limits<std::uint64_t>::max(), 4'294'967), -2'333'192);
}

TEST(ActiveTable, TakesEachMicrosecondOnceInARow) {
    using test::sample;
    const lsc::Samples samples = {sample(999),   sample(-999),  sample(5'000), sample(5'999, 9),
                                  sample(6'000), sample(5'000), sample(-5'999)};
    const ActiveSamples active = lsc::activate(samples, -166);
    std::vector<std::int64_t> times;
    for (std::int32_t i = 0; i < active.count; ++i)
        times.push_back(active[i].timeUs);
    // The first two fall on microsecond 0, where the comparison begins.
    EXPECT_THAT(times, testing::ElementsAre(5 + 166, 6 + 166, 5 + 166, -5 + 166));
    EXPECT_EQ(lsc::activate(test::millisecondSamples(test::kMs, 150), 0).count, 100);
}

struct SpanCase {
    const char* what;
    std::vector<std::int64_t> times;
    std::uint64_t startUs;
    std::uint32_t shutterUs;
    std::int32_t start, end;
};

TEST(Span, CoversExposureStartToReadoutEnd) {
    const SpanCase cases[] = {{"empty", {}, 0, 0, 0, 0},
                              {"one entry", {5000}, 5000, 0, 0, 0},
                              {"nearest start, nearest end", {1000, 2000, 3000, 4000, 5000, 6000}, 2100, 2200, 1, 3},
                              {"later neighbours are nearer", {1000, 2000, 3000, 4000, 5000, 6000}, 2600, 1700, 2, 4},
                              {"equal distances keep the earlier", {1000, 2000, 3000, 4000}, 1500, 1500, 0, 1},
                              {"999 us match", {1000, 9000, 10000}, 1, 8000, 0, 1},
                              {"1000 us do not", {1000, 9000, 10000}, 0, 8000, 0, 0},
                              {"time 0 is skipped as a start", {0, 900, 5000, 5900}, 10, 5000, 1, 3},
                              {"the last entry alone never starts", {1000, 2000, 9000}, 9000, 0, 0, 0},
                              {"start moved to the last entry", {1000, 2000, 2600}, 2550, 0, 2, 2},
                              {"no end within reach", {1000, 2000, 3000}, 1000, 9000, 0, 2},
                              {"end at the first entry takes all", {1000, 2000, 3000, 4000}, 1000, 0, 0, 3},
                              {"no shutter, later start", {1000, 2000, 3000, 4000}, 2000, 0, 1, 1}};
    for (const SpanCase& c : cases) {
        const SpanSearch span = lsc::findSpan(at(c.times), {0, 0, 0, c.startUs, c.shutterUs});
        EXPECT_EQ(span.start, c.start) << c.what;
        EXPECT_EQ(span.end, c.end) << c.what;
    }
}

TEST(Reduction, ModesGiveMeanLargestMiddleAndLast) {
    ActiveSamples samples = at({1, 2, 3, 4, 5, 6, 7, 8});
    samples.entries[4].y = 30;
    SpanSearch span;
    span.start = 3;
    span.end = 6;
    const auto reduce = [&](std::int32_t mode) {
        const auto p = lsc::reduceSpan(samples, span, mode);
        return p ? std::pair{p->x, p->y} : std::pair{-1.F, -1.F};
    };
    EXPECT_EQ(reduce(0), (std::pair{4.5F, 4.F}));
    EXPECT_EQ(reduce(1), (std::pair{6.F, 30.F}));
    EXPECT_EQ(reduce(2), (std::pair{5.F, -5.F}));
    EXPECT_EQ(reduce(3), (std::pair{6.F, -6.F}));
    span.end = 7;
    EXPECT_EQ(reduce(2), (std::pair{5.F, -5.F}));
    for (const std::int32_t mode : {-1, 4, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_FALSE(lsc::reduceSpan(samples, span, mode)) << mode;
    }
}

TEST(Reduction, MeanIsInSinglePrecision) {
    ActiveSamples samples = at({1, 2, 3});
    samples.entries[0].x = 16'777'216.F;  // 2^24: adding 1 is lost in single precision
    samples.entries[1].x = 1;
    samples.entries[2].x = 1;
    SpanSearch span;
    span.end = 2;
    EXPECT_EQ(lsc::reduceSpan(samples, span, lsc::kMean)->x, 16'777'216.F / 3.F);
}

TEST(Reduction, AnInvalidMeanHasNoSign) {
    ActiveSamples samples = at({1, 2});
    SpanSearch span;
    span.end = 1;
    samples.entries[0].x = std::numeric_limits<float>::infinity();
    samples.entries[1].x = -samples.entries[0].x;
    const float x = lsc::reduceSpan(samples, span, lsc::kMean)->x;
    EXPECT_TRUE(std::isnan(x));
    EXPECT_FALSE(std::signbit(x));
}

TEST(Reduction, LargestReplacesWhatIsNotGreater) {
    SpanSearch span;
    span.end = 2;
    const auto largestOf = [&span](float first, float second, float third) {
        ActiveSamples samples = at({1, 2, 3});
        for (const auto& [index, value] : {std::pair{0U, first}, {1U, second}, {2U, third}})
            samples.entries[index].x = samples.entries[index].y = value;
        return *lsc::reduceSpan(samples, span, lsc::kLargest);
    };
    for (const auto axis : {&lsc::LensPosition::x, &lsc::LensPosition::y}) {
        EXPECT_EQ(largestOf(kNan, -5, -7).*axis, -5.F);
        EXPECT_TRUE(std::isnan(largestOf(kNan, -5, kNan).*axis));
        EXPECT_TRUE(std::signbit(largestOf(0.F, 0.F, -0.F).*axis));
    }
}

}  // namespace
