#include "tools/report/Histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

// Each doubling of the numbers is divided into 2^kBits classes.
constexpr unsigned kBits = 10;
constexpr std::uint64_t kExact = std::uint64_t{2} << kBits;  // numbers below it have a class of their own

// Number of low bits that the class of `value` leaves open.
unsigned openBits(std::uint64_t value) {
    const auto width = narrow<unsigned>(std::bit_width(value));
    return width > kBits + 1 ? width - kBits - 1 : 0;
}

std::size_t classOf(std::uint64_t value) {
    const unsigned open = openBits(value);
    return (std::size_t{open} << kBits) + narrow<std::size_t>(value >> open);
}

std::uint64_t middleOf(std::size_t index) {
    if (index < kExact) return index;
    const std::uint64_t open = (index >> kBits) - 1;
    const std::uint64_t low = (index - (open << kBits)) << open;
    return low + ((std::uint64_t{1} << open) - 1) / 2;
}

}  // namespace

void Histogram::add(std::uint64_t value) {
    const std::size_t index = classOf(value);
    if (index >= mClasses.size()) mClasses.resize(index + 1);
    ++mClasses[index];
    ++mCount;
    mMax = std::max(mMax, value);
}

std::uint64_t Histogram::quantile(double share) const {
    if (mCount == 0) return 0;
    // Doubles hold every count that a session reaches.
    const double rank = std::ceil(share * static_cast<double>(mCount));
    const auto wanted = std::clamp<std::uint64_t>(static_cast<std::uint64_t>(std::max(rank, 1.0)), 1, mCount);
    std::uint64_t passed = 0;
    std::size_t index = 0;
    while ((passed += mClasses[index]) < wanted)
        ++index;
    return std::min(middleOf(index), mMax);
}

std::uint64_t Histogram::countAbove(std::uint64_t value) const {
    std::uint64_t count = 0;
    for (std::size_t index = classOf(value) + 1; index < mClasses.size(); ++index)
        count += mClasses[index];
    return count;
}

}  // namespace replay
