// How far a replay has come, on a terminal's standard error. Silent for short replays and when nobody watches.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace replay {

class Progress {
public:
    // `totalBytes` is the session's size, 0 when it is not known. Without `wanted`, or when standard error is no
    // terminal, nothing is ever printed.
    Progress(std::uint64_t totalBytes, bool wanted);
    // Takes the progress line off the terminal.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // `line` lines and `bytes` bytes are done.
    void update(std::size_t line, std::uint64_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    const std::uint64_t mTotalBytes;
    const bool mShown;
    bool mPrinted = false;
    Clock::time_point mNext;
};

}  // namespace replay
