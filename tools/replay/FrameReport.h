// The readable result of a session: a row for each exposure asked for, printed as it comes, and a summary.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <vector>

#include "tools/replay/Expectations.h"
#include "tools/replay/FrameInquiry.h"
#include "tools/replay/Observer.h"
#include "tools/replay/SampleAccount.h"
#include "tools/replay/look/Statistics.h"

namespace replay {

class FrameReport {
public:
    // `out` and `observers`, who hear of every batch and exposure, must outlive the report.
    FrameReport(std::ostream& out, std::vector<Observer*> observers);

    // One call asked for these exposures.
    void addFrame(const std::vector<ExposureOutcome>& outcomes);
    // What the device made of an exposure of that call: prints where it disagrees.
    void compare(const Expectation& expected) { mExpectations.check(expected, mOut); }
    // Hears of samples and monitors.
    SampleAccount& samples() { return mSamples; }

    // Prints the summary.
    void finish();

private:
    void addRow(const ExposureOutcome& outcome);

    std::ostream& mOut;
    Statistics mStatistics;
    const std::vector<Observer*> mObservers;  // the statistics among them
    SampleAccount mSamples{mObservers};
    Expectations mExpectations;
    std::uint64_t mFrames = 0;
    std::uint64_t mExposures = 0;
    std::array<std::uint64_t, Reason::kKinds> mReasons{};  // exposures without a position, by Reason::Kind
};

}  // namespace replay
