// Compares what a device made of the exposures with what the workstation makes of them, and says where they disagree.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"
#include "tools/report/Agreement.h"
#include "tools/session/Expectation.h"

namespace replay {

class Comparison : public Observer {
public:
    // `out` must outlive the comparison. A result of the device is met by a position that is no farther away than the
    // tolerance, in x and in y, or by none where the device has none.
    explicit Comparison(std::ostream& out, double tolerance = kRounding) : mOut(out), mTolerance(tolerance) {}

    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override { mOutcomes = outcomes; }
    // Compares with the newest call's outcomes as "%f" prints them, and prints a line for a result that is not met.
    void expected(const Expectation& expectation) override;

    // Counts for the summary with their labels; none when nothing was compared.
    std::vector<std::pair<std::string, std::uint64_t>> counts() const;

    // The expectations of one sensor and type.
    struct Group {
        std::uint64_t compared = 0;
        std::uint64_t unmet = 0;
        std::string lines;  // of the first ones not met
    };
    using Groups = std::map<std::pair<std::int32_t, std::uint32_t>, Group>;
    const Groups& groups() const { return mGroups; }
    // Whether there are expectations and all are met.
    bool isMet() const;

private:
    std::ostream& mOut;
    const double mTolerance;
    Groups mGroups;
    std::vector<ExposureOutcome> mOutcomes;
    std::map<Agreement, std::uint64_t> mCounts;
};

}  // namespace replay
