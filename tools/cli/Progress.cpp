#include "tools/cli/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

namespace replay {
namespace {

constexpr auto kFirstAfter = std::chrono::seconds(1);
constexpr auto kInterval = std::chrono::milliseconds(200);
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::uint64_t totalBytes, bool wanted)
    : mTotalBytes(totalBytes), mShown(wanted && isatty(STDERR_FILENO) != 0), mNext(Clock::now() + kFirstAfter) {}

Progress::~Progress() {
    if (mPrinted) std::fputs(kEraseLine, stderr);
}

void Progress::update(std::size_t line, std::uint64_t bytes) {
    if (!mShown || Clock::now() < mNext) return;
    mNext = Clock::now() + kInterval;
    mPrinted = true;
    if (mTotalBytes == 0) {
        fmt::print(stderr, "{}{} lines", kEraseLine, line);
        return;
    }
    // A last line without an end counts one byte more than there is.
    const std::uint64_t percent = std::min<std::uint64_t>(100, bytes * 100 / mTotalBytes);
    fmt::print(stderr, "{}{} lines, {}%", kEraseLine, line, percent);
}

}  // namespace replay
