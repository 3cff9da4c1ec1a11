// The causes of exposures without a position, and of wrong positions, that the figures of a sensor show by themselves.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/report/Findings.h"

namespace replay {

// A finding, and the exposures that got no position because of it: those for some reasons, wherever they lie, and those
// that lie at places of a kind.
struct Cause {
    Finding finding;
    std::vector<Reason::Kind> explains;
    Place place = Place::kAnywhere;  // which is no place of its own
};
// With the sensor's id still to be set.
Cause cause(std::string code, std::vector<std::pair<std::string, double>> numbers, std::string advice,
            std::vector<Reason::Kind> explains, Place place = Place::kAnywhere);

// A cause comes before what it may bring about.
std::vector<Cause> causesIn(const SensorStatistics& sensor);

// "1 exposure", "3 exposures".
std::string counted(std::uint64_t count, std::string_view what, std::string_view ending = "s");
// "994 Hz", in words where a number would mean nothing.
std::string rateText(const SensorStatistics& sensor);
// From one sample to the next: "1.006 ms", or in words for time stamps that no session holds.
std::string stepText(std::uint64_t us);
// In ms, with so many decimals, or as many as a short time needs.
std::string shortMs(double us, int decimals);
// For a reader: the first digits are enough.
inline double number(std::uint64_t value) {
    return static_cast<double>(value);  // as said
}

}  // namespace replay
