// When a session begins and ends, and the part of it that a reader asks for. Parts are given in ms from the first
// sample of all sensors; in a session without samples, from the first start of frame.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"

namespace replay {

// A part of a session; without a limit, up to its end.
struct TimeLimits {
    std::optional<double> fromMs;
    std::optional<double> toMs;

    bool given() const { return fromMs || toMs; }
    // Whether something from `beginMs` to `endMs` lies in the part, if only by an end.
    bool touches(double beginMs, double endMs) const {
        return !(fromMs && endMs < *fromMs) && !(toMs && beginMs > *toMs);
    }
    // Throws std::invalid_argument unless both are finite and the first is below the second.
    void check() const;
};

class Extent : public Observer {
public:
    void handedOver(const HandOver& handOver) override;
    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override;

    // Time stamp of the first sample; without samples, the first start of frame; 0 without either.
    std::int64_t beginNs() const { return mFirstSample ? *mFirstSample : mFirstFrame.value_or(0); }
    // In a double, because two times may lie farther apart than 64 bits reach.
    double ms(std::int64_t ns) const { return msBetween(beginNs(), ns); }
    static double msBetween(std::int64_t beginNs, std::int64_t endNs);

    // Throws std::invalid_argument when the part begins after the session's last sample and frame.
    void checkBegin(const TimeLimits& limits) const;

private:
    void reach(std::int64_t ns);

    std::optional<std::int64_t> mFirstSample;
    std::optional<std::int64_t> mFirstFrame;
    std::optional<std::int64_t> mLast;
};

// When an exposure's rows were exposed and read, in ns of the session's clock.
struct RowTimes {
    std::int64_t exposed;   // the first row begins to be exposed
    std::int64_t read;      // the first row is read: the start of frame
    std::int64_t finished;  // the last row is read
};
// Nothing for an exposure without times, or with times that no session lasts.
std::optional<RowTimes> timesOf(const ExposureOutcome& outcome);

}  // namespace replay
