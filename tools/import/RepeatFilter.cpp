#include "tools/import/RepeatFilter.h"

#include <algorithm>
#include <functional>

namespace replay::import {
namespace {

std::uint64_t keyOf(const LogLine& line) {
    constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15;  // spreads the bits
    const std::hash<std::string_view> hash;
    return hash(line.text) ^ (hash(line.time) + line.tid.value_or(0)) * kMix;
}

constexpr std::string_view kLastDay = "12-31 ";
constexpr std::string_view kFirstDay = "01-01 ";

// Clocks of one form compare as texts but for seconds without leading zeros, and the turn of a year that none names.
bool isBefore(std::string_view a, std::string_view b) {
    if (a.starts_with(kLastDay) && b.starts_with(kFirstDay)) return true;
    if (a.starts_with(kFirstDay) && b.starts_with(kLastDay)) return false;
    const std::size_t lengths[] = {a.find('.'), b.find('.')};
    return lengths[0] != lengths[1] ? lengths[0] < lengths[1] : a < b;
}

}  // namespace

std::uint64_t RepeatFilter::findUp(std::uint64_t from, std::uint64_t key) const {
    while (from < mRecords && keyAt(from) != key)
        ++from;
    return from;
}

std::uint64_t RepeatFilter::findDown(std::uint64_t key) const {
    const std::uint64_t kept = std::min<std::uint64_t>(mRecords, kKept);
    for (std::uint64_t i = 1; i <= kept; ++i) {
        if (keyAt(mRecords - i) == key) return mRecords - i;
    }
    return mRecords;
}

void RepeatFilter::remember(std::string_view clock, std::uint64_t key) {
    if (mKeys.empty()) mKeys.resize(kKept);
    mKeys[mRecords++ % kKept] = key;
    mClock = clock;
}

RepeatFilter::Verdict RepeatFilter::check(const LogLine& line) {
    if (line.time.empty()) return Verdict::kNew;
    const std::uint64_t key = keyOf(line);
    const bool back = !mClock.empty() && isBefore(line.time, mClock);
    if (!back && !mRepeating) {
        remember(line.time, key);
        return Verdict::kNew;
    }
    const std::uint64_t found = mRepeating ? findUp(mNext, key) : findDown(key);
    if (found < mRecords) {
        mRepeating = true;
        mNext = found + 1;
        return Verdict::kRepeated;
    }
    if (mRepeating && back) return Verdict::kLate;
    mRepeating = false;
    remember(line.time, key);
    return back ? Verdict::kBack : Verdict::kNew;
}

}  // namespace replay::import
