// Errors of positions against paths whose mean over an exposure is known in closed form.
#include "tools/report/Accuracy.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

using replay::accuracyOf;
using replay::LensPath;
using replay::PathPoint;
using replay::Position;
using replay::RowTimes;
using replay::Served;
using testing::DoubleNear;

constexpr std::int64_t kMs = 1'000'000;

template <typename Lens>
LensPath sampled(Lens lens, std::int64_t stepNs, std::int64_t endNs = 2000 * kMs) {
    std::vector<PathPoint> points;
    for (std::int64_t time = 0; time <= endNs; time += stepNs)
        points.push_back({time, lens(static_cast<double>(time) / kMs)});
    return LensPath(points);
}

RowTimes rowsAt(std::int64_t readNs, std::int64_t exposureNs, std::int64_t readoutNs) {
    return {readNs - exposureNs, readNs, readNs + readoutNs};
}

constexpr double kHz = 8;
constexpr double kRadPerMs = 2 * std::numbers::pi * kHz / 1000;

Position swing(double ms) {
    return {100 * std::sin(kRadPerMs * ms), 50 * std::cos(kRadPerMs * ms)};
}

// A box of this length takes so much of a swing's height.
double sinc(double lengthMs) {
    const double half = kRadPerMs * lengthMs / 2;
    return half == 0 ? 1 : std::sin(half) / half;
}

TEST(PathMean, OfASwingIsThatOfBothBoxes) {
    const LensPath path = sampled(swing, kMs / 20);
    for (const auto& [exposure, readout] : std::vector<std::pair<int, int>>{{1, 16}, {12, 10}, {10, 10}, {30, 10}}) {
        const Position mean = path.meanOver(rowsAt(700 * kMs, exposure * kMs, readout * kMs));
        const Position middle = swing(700 + (readout - exposure) / 2.0);
        const double left = sinc(exposure) * sinc(readout);
        EXPECT_NEAR(mean.x, left * middle.x, 1e-4) << exposure << " and " << readout;
        EXPECT_NEAR(mean.y, left * middle.y, 1e-4) << exposure << " and " << readout;
    }
}

TEST(PathMean, WithoutExposureOrReadoutIsThatOfABoxOrAPoint) {
    const auto square = [](double ms) { return Position{ms * ms, -ms}; };
    const LensPath path = sampled(square, kMs / 100, 40 * kMs);
    EXPECT_THAT(path.meanOver(rowsAt(20 * kMs, 6 * kMs, 0)).x, DoubleNear(17.0 * 17 + 3, 1e-4));
    EXPECT_THAT(path.meanOver(rowsAt(20 * kMs, 0, 6 * kMs)).x, DoubleNear(23.0 * 23 + 3, 1e-4));
    EXPECT_THAT(path.meanOver(rowsAt(20 * kMs + 3, 0, 0)).y, DoubleNear(-20.000003, 1e-9));
    // The variance of a trapezoid is that of its two boxes.
    EXPECT_THAT(path.meanOver(rowsAt(20 * kMs, 6 * kMs, 12 * kMs)).x, DoubleNear(23.0 * 23 + 3 + 12, 1e-4));
}

TEST(PathMean, OfPointsFarApartIsThatOfTheLinesBetweenThem) {
    const LensPath path({{0, {0, 0}}, {10 * kMs, {10, 0}}, {20 * kMs, {0, 0}}});
    // The box from 5 to 15 ms holds two trapezoids of 5 and 10.
    EXPECT_DOUBLE_EQ(path.meanOver(rowsAt(15 * kMs, 10 * kMs, 0)).x, 7.5);
    EXPECT_DOUBLE_EQ(path.meanOver(rowsAt(10 * kMs, 10 * kMs, 10 * kMs)).x, 20.0 / 3);
    EXPECT_DOUBLE_EQ(path.meanOver(rowsAt(20 * kMs, 0, 0)).x, 0);
}

TEST(PathCover, EndsAtTheEndsAndAtGaps) {
    std::vector<PathPoint> points;
    for (const int ms : {5, 1, 2, 3, 4, 4, 7, 8, 11, 12, 13})  // 8 to 11 is more than two steps, 5 to 7 is not
        points.push_back({ms * kMs, {}});
    points.push_back({9 * kMs, {std::numeric_limits<double>::quiet_NaN(), 0}});
    const LensPath path(points);
    const auto covers = [&path](int from, int to) { return path.covers(from * kMs, to * kMs); };
    EXPECT_TRUE(covers(1, 8) && covers(11, 13) && covers(12, 12));
    EXPECT_FALSE(covers(0, 3) || covers(12, 14) || covers(7, 9) || covers(8, 11) || covers(9, 10) || covers(1, 13));
    EXPECT_FALSE(LensPath({}).covers(0, 0));
}

TEST(Errors, HaveTheirSizesByAxis) {
    const LensPath path = sampled([](double ms) { return Position{ms, 0}; }, kMs);
    std::vector<Served> served;
    for (int i = 1; i <= 40; ++i) {
        const RowTimes rows = rowsAt((100 + i) * kMs, 2 * kMs, 4 * kMs);
        const Position mean = path.meanOver(rows);
        served.push_back({rows, {mean.x + (i % 2 == 0 ? 3 : -3), mean.y + i}});
    }
    served.push_back({rowsAt(2000 * kMs, 2 * kMs, 4 * kMs), {}});  // past the path
    const replay::Accuracy of = accuracyOf(served, path);
    EXPECT_EQ(of.exposures, 40U);
    EXPECT_NEAR(of.x.rms, 3, 1e-9);
    EXPECT_NEAR(of.y.rms, std::sqrt(41 * 81 / 6.0), 1e-9);
    EXPECT_NEAR(of.both.rms, std::sqrt(9 + 41 * 81 / 6.0), 1e-9);
    EXPECT_NEAR(of.y.most, 38, 1e-9);
    EXPECT_NEAR(of.both.worst, std::sqrt(9.0 + 1600), 1e-9);
}

TEST(Lags, AreFoundEitherWay) {
    const LensPath path = sampled(swing, kMs);
    for (const std::int64_t lagNs : {11'234'500LL, -7'100LL, 0LL, -39'999'000LL}) {
        std::vector<Served> served;
        for (std::int64_t read = 200 * kMs; read < 1800 * kMs; read += 33 * kMs) {
            const RowTimes rows = rowsAt(read, 5 * kMs, 10 * kMs);
            served.push_back({rows, path.meanOver(replay::shifted(rows, -lagNs))});
        }
        const replay::Accuracy of = accuracyOf(served, path);
        ASSERT_TRUE(of.lag);
        EXPECT_LE(std::abs(of.lag->ns - lagNs), 200) << lagNs;
        EXPECT_NEAR(of.lag->restRms, 0, 0.002);
    }
    EXPECT_FALSE(accuracyOf({{rowsAt(20 * kMs, 0, 0), {}}}, path).lag);  // the shifts need 40 ms on both sides
}

TEST(Classes, DoubleFromAMillisecondOn) {
    const auto classOf = [](std::int64_t exposureNs) {
        return replay::exposureClass({rowsAt(1000 * kMs, exposureNs, 0), {}});
    };
    EXPECT_EQ(classOf(kMs - 1), 0U);
    EXPECT_EQ(classOf(kMs), 1U);
    EXPECT_EQ(classOf(4 * kMs), 3U);
    EXPECT_EQ(classOf(8 * kMs - 1), 3U);
    EXPECT_EQ(classOf(900 * kMs), replay::kExposureClasses - 1);
}

TEST(Outcomes, AreServedOnceAndByTheirOwnCall) {
    replay::ExposureOutcome outcome;
    outcome.times.emplace();
    outcome.times->sofNs = 1000 * kMs;
    outcome.times->exposureNs = 2 * kMs;
    EXPECT_FALSE(replay::servedOf(outcome));
    outcome.position = Position{1, 2};
    ASSERT_TRUE(replay::servedOf(outcome));
    EXPECT_EQ(replay::servedOf(outcome)->rows.exposed, 998 * kMs);
    outcome.reason = replay::plainReason(replay::Reason::Kind::kAlreadyWritten);
    EXPECT_FALSE(replay::servedOf(outcome));
}

}  // namespace
