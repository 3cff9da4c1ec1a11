// Where exposures that lack samples lie. A cause that lies at one place of a session explains the exposures there,
// before one that holds for the whole session does.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "tools/diagnose/Outcome.h"
#include "tools/diagnose/Reason.h"

namespace replay {

struct SensorStatistics;

enum class Place {
    kAnywhere,   // none of the following
    kSilence,    // the hall sensor gave nothing
    kClockStep,  // the samples' clock was set ahead; a silence after all unless sensor.clockSteps() agrees
    kMissingHandOver,
    kDiscardedBatch,
    kLateHandOver,  // the frame was asked for before its hand-over
};

inline constexpr std::array kPlaces = {Place::kAnywhere,        Place::kSilence,        Place::kClockStep,
                                       Place::kMissingHandOver, Place::kDiscardedBatch, Place::kLateHandOver};

class Places {
public:
    void monitorStarted();
    // Two samples that came one after the other, so far apart that an exposure may start between them and match
    // neither. The place is that of the exposures between them.
    void addStep(std::int64_t beginNs, std::int64_t endNs, Place place);
    // To be called when `sensor` has counted the hand-over. `afterMissing`: frame numbers lack one just before it.
    void handedOver(const SensorStatistics& sensor, const HandOver& handOver, bool afterMissing);
    // An exposure got no position.
    void lacked(const SensorStatistics& sensor, const ExposureOutcome& outcome);

    std::uint64_t count(Place place, Reason::Kind kind) const { return at(place)[indexOf(kind)]; }
    std::uint64_t count(Place place) const;
    // Most hand-overs without a sample, before the first sample and after the last one that a monitor got.
    std::uint64_t emptyFirst() const;
    std::uint64_t emptyLast() const;

private:
    using Counts = std::array<std::uint64_t, kReasonKinds>;

    // An exposure of which the next hand-over may tell more.
    struct Lack {
        Reason::Kind kind;
        std::uint64_t sofNs;
        std::uint64_t buffered;  // samples, if they were too few
        bool early;              // its own hand-over had not come
        Place place;
    };
    struct Step {
        std::int64_t beginNs;
        std::int64_t endNs;
        Place place;
    };

    const Counts& at(Place place) const { return mCounts[static_cast<std::size_t>(place)]; }  // they count from 0
    Counts& at(Place place) { return mCounts[static_cast<std::size_t>(place)]; }              // the same
    Place placeNow(const SensorStatistics& sensor, const Lack& lack) const;
    Place placeAfter(const SensorStatistics& sensor, const Lack& lack, const HandOver& next, bool afterMissing) const;
    Place stepAt(const SensorStatistics& sensor, std::int64_t stampNs, Place otherwise) const;

    std::array<Counts, kPlaces.size()> mCounts{};
    std::vector<Lack> mOpen;  // since the newest hand-over
    std::deque<Step> mSteps;  // the newest ones

    Place mNewest = Place::kAnywhere;  // what the newest hand-over lacks: all samples, or one filed
    // Hand-overs since the monitor was started.
    std::uint64_t mFull = 0;   // with samples
    std::uint64_t mEmpty = 0;  // without, since the newest sample
    std::uint64_t mEmptyAtStart = 0;
    // Over all starts.
    std::uint64_t mEmptyFirst = 0;
    std::uint64_t mEmptyLast = 0;
};

}  // namespace replay
