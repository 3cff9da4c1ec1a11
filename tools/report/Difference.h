// What differs between the exposures of two sessions, or of one session played by two builds: from their rows of
// comma-separated values.
#pragma once

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace replay {

// What one exposure is compared by; numbers as they are written.
struct ExposureRow {
    std::string sensor;
    std::string type;
    std::string startNs;
    std::string x;  // empty without a position
    std::string y;
    std::string reason;  // in full; empty for a position of this call

    bool isServed() const { return reason.empty(); }
};

// Reads what writeExposures() wrote. `name` is the input's in messages. Throws SessionError, StreamError.
std::vector<ExposureRow> readExposures(std::istream& input, const std::string& name);

struct Difference {
    struct Side {
        std::uint64_t exposures = 0;
        std::uint64_t served = 0;
        std::uint64_t unmatched = 0;   // the other side has no such exposure
        std::uint64_t onlyServed = 0;  // of those matched, served on this side alone
    };
    Side before;
    Side after;
    std::uint64_t positions = 0;        // served on both sides, with another position
    std::vector<double> distances;      // between the two positions, of each that is served on both sides; ascending
    std::uint64_t reasons = 0;          // served on neither side, for another reason
    std::vector<std::string> examples;  // the first differences, a line each

    bool isAlike() const {
        return before.unmatched + after.unmatched + before.onlyServed + after.onlyServed + positions + reasons == 0;
    }
};

// Matches exposures by sensor, type and start of frame; of several with the same, the first with the first, and so on.
Difference compareExposures(const std::vector<ExposureRow>& before, const std::vector<ExposureRow>& after);

void printDifference(std::ostream& out, const Difference& difference);

}  // namespace replay
