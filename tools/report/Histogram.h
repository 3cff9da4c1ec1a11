// Counts of non-negative numbers in bounded memory, for medians and percentiles of long sessions. Numbers below 2048
// are told apart exactly, larger ones to one part in 1024.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace replay {

class Histogram {
public:
    void add(std::uint64_t value);

    std::uint64_t count() const { return mCount; }
    // The largest number, exactly; 0 without any.
    std::uint64_t max() const { return mMax; }
    // The smallest number that at least the share `share` (0 to 1) of the numbers does not exceed: 0.5 gives the lower
    // median. A number that is not exact is the middle of its class. 0 without numbers.
    std::uint64_t quantile(double share) const;
    // How many numbers exceed `value`, those of its own class not counted.
    std::uint64_t countAbove(std::uint64_t value) const;

private:
    std::vector<std::uint64_t> mClasses;  // as long as the largest number needs, at most 56 Ki entries
    std::uint64_t mCount = 0;
    std::uint64_t mMax = 0;
};

}  // namespace replay
