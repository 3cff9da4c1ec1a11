// What a device made of the exposures of a session, kept in lines that begin with "#expect {": comments to whoever does
// not know them. Each stands after its call; the table then says where device and workstation disagree.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/replay/FrameInquiry.h"

namespace replay {

struct Expectation {
    struct Printed {
        std::string x, y;  // with "%f"
    };

    std::optional<std::uint32_t> frame;  // for the reader
    std::int32_t sensor = 0;
    std::uint32_t type = 0;
    std::optional<Printed> position;
};

// Reads the line. Throws LineError for one that the format does not allow.
Expectation readExpectation(std::string_view line);

class Expectations {
public:
    // The newest call's outcomes.
    void asked(const std::vector<ExposureOutcome>& outcomes) { mOutcomes = outcomes; }

    // Compares with the newest call's outcomes as "%f" prints them and says on `out` where they differ by more than
    // one in the last decimal, which samples from a log explain.
    void check(const Expectation& expected, std::ostream& out);

    // Counts for the summary with their labels; none when nothing was compared.
    std::vector<std::pair<std::string_view, std::uint64_t>> counts() const;

private:
    std::vector<ExposureOutcome> mOutcomes;
    std::uint64_t mSame = 0;
    std::uint64_t mRounded = 0;
    std::uint64_t mDifferent = 0;
    std::uint64_t mOnlyDevice = 0;  // positions that the workstation has not
    std::uint64_t mOnlyHere = 0;
};

}  // namespace replay
