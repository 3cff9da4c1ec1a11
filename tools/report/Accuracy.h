// How far the reported lens positions are from where the lens was: pure functions of what was recorded.
// docs/accuracy.md explains the figures.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/report/LensPath.h"

namespace replay {

// A position reported for an exposure, and when that took place.
struct Served {
    RowTimes rows;
    Position position;
};

// The exposure, when the call that asked for it wrote a position.
std::optional<Served> servedOf(const ExposureOutcome& outcome);
// All such exposures.
std::vector<Served> servedOf(const SensorRecording& sensor);
// The same exposures with the mean of the path over each in place of the position; without those it does not cover.
std::vector<Served> weighted(const std::vector<Served>& exposures, const LensPath& path);

// Reported position minus the mean of the path; nothing when the path does not cover the exposure.
std::optional<Position> errorOf(const Served& exposure, const LensPath& path);

struct ErrorSize {
    double rms = 0;
    double most = 0;   // at least 95 % of the errors are no larger
    double worst = 0;  // of all
};

// How much older than its exposure a position is, on average: least squares over shifts of `kMaxLagNs` either way. Of
// very many exposures every n-th is used.
struct Lag {
    std::int64_t ns = 0;
    double restRms = 0;  // of the errors, both axes together, against the exposures moved by it
};

struct Accuracy {
    std::uint64_t exposures = 0;  // compared
    ErrorSize x;
    ErrorSize y;
    ErrorSize both;          // the distance in the plane
    std::optional<Lag> lag;  // nothing when the path covers no exposure as far as the shifts go
};
inline constexpr std::int64_t kMaxLagNs = 40'000'000;
inline constexpr std::size_t kMaxLagExposures = 2000;

// Of the exposures that the path covers.
Accuracy accuracyOf(const std::vector<Served>& exposures, const LensPath& path);

// By exposure time: class 0 is below 1 ms, class k from 2^(k-1) ms to below 2^k ms, the last one takes all longer ones.
inline constexpr std::size_t kExposureClasses = 8;
std::size_t exposureClass(const Served& exposure);
std::array<Accuracy, kExposureClasses> accuracyByExposure(const std::vector<Served>& exposures, const LensPath& path);

}  // namespace replay
