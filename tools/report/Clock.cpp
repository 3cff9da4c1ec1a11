#include "tools/report/Clock.h"

#include <algorithm>
#include <cmath>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/session/Narrow.h"

namespace replay {
namespace {

constexpr std::size_t kMaxPoints = 256;  // 32640 pairs
constexpr std::size_t kMinPoints = 32;
constexpr double kMostDrift = 0.1;  // far beyond what any clock has: the time stamps are no clock's

// Differences of wrapped sums, read as signed: time stamps may lie anywhere in 64 bits.
std::int64_t signedDifference(std::uint64_t a, std::uint64_t b) {
    return static_cast<std::int64_t>(a - b);
}

double toUs(std::int64_t ns) {
    return static_cast<double>(ns) / lsc::kNsPerUs;  // a fit needs no more digits
}

// The largest one exactly.
std::uint64_t quantile(const Histogram& values, double share) {
    return share < 1.0 ? values.quantile(share) : values.max();
}

}  // namespace

void Clock::add(std::uint64_t atNs, std::int64_t differenceNs) {
    if (!mFirst) mFirst.emplace(atNs, differenceNs);
    const auto difference = static_cast<std::uint64_t>(differenceNs);  // as above
    const auto first = static_cast<std::uint64_t>(mFirst->second);
    const std::uint64_t index = count();
    if (differenceNs < mFirst->second) {
        mEarlier.add((first - difference) / lsc::kNsPerUs);
    } else {
        mLater.add((difference - first) / lsc::kNsPerUs);
    }
    if (index % mStride != 0) return;
    mPoints.emplace_back(toUs(signedDifference(atNs, mFirst->first)), toUs(signedDifference(difference, first)));
    if (mPoints.size() < kMaxPoints) return;
    mStride *= 2;
    for (std::size_t i = 0; i < kMaxPoints / 2; ++i)
        mPoints[i] = mPoints[2 * i];
    mPoints.resize(kMaxPoints / 2);
}

std::int64_t Clock::quantileUs(double share) const {
    if (!mFirst) return 0;
    const double earlier = static_cast<double>(mEarlier.count()) / static_cast<double>(count());  // counts are small
    const std::int64_t first = mFirst->second / lsc::kNsPerUs;
    if (share < earlier || mLater.count() == 0) {
        return first - narrow<std::int64_t>(quantile(mEarlier, 1.0 - share / earlier));
    }
    return first + narrow<std::int64_t>(quantile(mLater, (share - earlier) / (1.0 - earlier)));
}

std::optional<Clock::Drift> Clock::drift() const {
    if (mPoints.size() < kMinPoints) return std::nullopt;
    const auto middle = mPoints.begin() + static_cast<std::ptrdiff_t>(mPoints.size() / 2);  // at most kMaxPoints
    const double all = slope(mPoints.begin(), mPoints.end());
    if (std::abs(all) > kMostDrift) return std::nullopt;
    const auto agrees = [all](double half) { return half / all > 0.5 && half / all < 2.0; };
    return Drift{all * 1e6, all * (mPoints.back().first - mPoints.front().first),
                 all != 0.0 && agrees(slope(mPoints.begin(), middle)) && agrees(slope(middle, mPoints.end()))};
}

double Clock::slope(Points::const_iterator begin, Points::const_iterator end) {
    std::vector<double> slopes;
    for (auto a = begin; a != end; ++a) {
        for (auto b = a + 1; b != end; ++b) {
            if (a->first != b->first) slopes.push_back((b->second - a->second) / (b->first - a->first));
        }
    }
    if (slopes.empty()) return 0.0;
    const auto median = slopes.begin() + static_cast<std::ptrdiff_t>(slopes.size() / 2);
    std::ranges::nth_element(slopes, median);
    return *median;
}

}  // namespace replay
