// Compares what a device made of the exposures with what the workstation makes of them, and says where they disagree.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"
#include "tools/session/Expectation.h"

namespace replay {

class Comparison : public Observer {
public:
    // `out` must outlive the comparison.
    explicit Comparison(std::ostream& out, double tolerance = kRounding) : mOut(out), mTolerance(tolerance) {}
    // One in the sixth decimal, with room for the binary form of both.
    static constexpr double kRounding = 1.5e-6;

    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override { mOutcomes = outcomes; }
    // Compares with the newest call's outcomes as "%f" prints them. A difference of more than one in the last decimal
    // is printed; samples from a log explain a smaller one.
    void expected(const Expectation& expectation) override;

    // Counts for the summary with their labels; none when nothing was compared.
    std::vector<std::pair<std::string_view, std::uint64_t>> counts() const;

    // The expectations of one sensor and type. One is not met by a position that is farther away than the tolerance, in
    // x or y, or that only one of the two has.
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
    void judge(const Expectation& expectation, const std::optional<Expectation::Printed>& here);

    std::ostream& mOut;
    const double mTolerance;
    Groups mGroups;
    std::vector<ExposureOutcome> mOutcomes;
    std::uint64_t mSame = 0;
    std::uint64_t mRounded = 0;
    std::uint64_t mDifferent = 0;
    std::uint64_t mOnlyDevice = 0;  // positions that the workstation has not
    std::uint64_t mOnlyHere = 0;
};

}  // namespace replay
