// What a device made of an exposure, kept in a line that begins with "#expect {": a comment to whoever does not know
// it. It stands after the call that asked for the exposure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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

// Positions that agree but for rounding differ by no more, in x and in y: one in the sixth decimal, with room for the
// binary form of both.
inline constexpr double kRounding = 1.5e-6;

bool isExpectation(std::string_view line);

// Reads the line. Throws LineError for one that the format does not allow.
Expectation readExpectation(std::string_view line);

}  // namespace replay
