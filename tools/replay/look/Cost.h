// What the calls into the library cost.
#pragma once

#include <chrono>
#include <map>
#include <ostream>
#include <string>

#include "tools/replay/look/Histogram.h"

namespace replay {

// Adds the nanoseconds of its own life to a histogram, or does nothing without one.
class Stopwatch {
public:
    explicit Stopwatch(Histogram* cost) : mCost(cost) {
        if (mCost != nullptr) mStart = Clock::now();
    }
    ~Stopwatch() {
        if (mCost == nullptr) return;
        // A steady clock does not go back.
        mCost->add(static_cast<std::uint64_t>(std::chrono::nanoseconds(Clock::now() - mStart).count()));
    }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    Histogram* const mCost;
    Clock::time_point mStart;
};

class Costs {
public:
    // The histogram, in ns, of the function `call`.
    Histogram& of(const std::string& call) { return mCalls[call]; }

    // A table with a row for each function that was called: how often, median, 99th percentile, worst, in us.
    void print(std::ostream& out) const;

private:
    std::map<std::string, Histogram> mCalls;
};

}  // namespace replay
