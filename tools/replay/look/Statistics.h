// Figures of a session, sensor by sensor, in memory that does not grow with its length.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>

#include "tools/replay/Observer.h"
#include "tools/replay/Reason.h"
#include "tools/replay/look/Histogram.h"

namespace replay {

struct SensorStatistics {
    // Of the exposures that got a position.
    Histogram matchUs;      // distance from the exposure start to the sample that the span starts from
    Histogram spanSamples;  // samples that were reduced to the position

    // Of samples that came one after the other, without those that the provider had handed over before. Late ones,
    // with a time stamp before one already seen, count for nothing.
    Histogram periodUs;

    // Batches, by what became of them. A split batch was filed, too.
    std::uint64_t filed = 0;
    std::uint64_t split = 0;
    std::uint64_t discarded = 0;
    std::uint64_t empty = 0;

    // Exposures without a position by Reason::Kind, and the largest number that a reason of the kind gave.
    struct Missing {
        std::uint64_t count = 0;
        std::uint64_t largest = 0;
    };
    std::array<Missing, Reason::kKinds> missing{};

    std::optional<std::int64_t> newestNs;  // the latest time stamp since the monitor was started

    const Missing& without(Reason::Kind kind) const { return missing[static_cast<std::size_t>(kind)]; }  // from 0 on
    // Periods longer than two median ones.
    std::uint64_t gaps() const { return periodUs.countAbove(2 * periodUs.quantile(0.5)); }
};

class Statistics : public Observer {
public:
    void monitorStarted(std::int32_t sensor) override;
    void batchTaken(const TakenBatch& batch) override;
    void exposureAsked(const ExposureOutcome& outcome) override;

    const std::map<std::int32_t, SensorStatistics>& sensors() const { return mSensors; }

private:
    std::map<std::int32_t, SensorStatistics> mSensors;
};

}  // namespace replay
