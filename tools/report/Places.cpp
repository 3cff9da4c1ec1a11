#include "tools/report/Places.h"

#include <algorithm>
#include <numeric>

#include "tools/report/Statistics.h"

namespace replay {
namespace {

using Kind = Reason::Kind;
using Fate = lsc::SampleQueue::Fate;

// While nothing is handed over, more need not be told apart.
constexpr std::size_t kMostOpen = 1024;

// From one time to another; wraps, and is signed then, because time stamps may lie anywhere in 64 bits.
std::int64_t nsFrom(std::uint64_t beginNs, std::uint64_t endNs) {
    return static_cast<std::int64_t>(endNs - beginNs);
}

// By more than half a frame: time stamps of a frame need not agree to the last.
bool isLater(const SensorStatistics& sensor, std::uint64_t ns, std::uint64_t thanNs) {
    const std::uint64_t halfFrameNs = sensor.frame->intervalUs * lsc::kNsPerUs / 2;
    return nsFrom(thanNs, ns) > static_cast<std::int64_t>(halfFrameNs);  // far below 2^63
}

// The frame started after the one that was handed over last.
bool isEarly(const SensorStatistics& sensor, std::uint64_t sofNs) {
    return !sensor.frame || isLater(sensor, sofNs, sensor.frame->timestampNs);
}

// With the newest hand-over a sample no earlier than `sofNs` would have come.
bool isDue(const SensorStatistics& sensor, std::uint64_t sofNs) {
    return nsFrom(sensor.frame->timestampNs, sofNs) / std::int64_t{lsc::kNsPerUs} <= sensor.clock.quantileUs(0.5);
}

}  // namespace

void Places::monitorStarted() {
    mEmptyFirst = emptyFirst();
    mEmptyLast = emptyLast();
    mFull = mEmpty = mEmptyAtStart = 0;
    mNewest = Place::kAnywhere;
    mOpen.clear();
}

std::uint64_t Places::emptyFirst() const {
    return std::max(mEmptyFirst, mFull == 0 ? mEmpty : mEmptyAtStart);
}

std::uint64_t Places::emptyLast() const {
    return std::max(mEmptyLast, mFull == 0 ? 0 : mEmpty);
}

std::uint64_t Places::count(Place place) const {
    return std::accumulate(at(place).begin(), at(place).end(), std::uint64_t{0});
}

void Places::addStep(std::int64_t beginNs, std::int64_t endNs, Place place) {
    mSteps.push_back({beginNs, endNs, place});
    if (mSteps.size() > lsc::kWindowSize) mSteps.pop_front();  // no exposure is searched in more samples
}

Place Places::stepAt(const SensorStatistics& sensor, std::int64_t stampNs, Place otherwise) const {
    for (const Step& step : mSteps) {
        if (stampNs < step.beginNs || stampNs > step.endNs) continue;
        const auto ns = nsFrom(static_cast<std::uint64_t>(step.beginNs), static_cast<std::uint64_t>(step.endNs));
        if (ns / std::int64_t{lsc::kNsPerUs} > static_cast<std::int64_t>(sensor.longestStepUs())) return step.place;
    }
    return otherwise;
}

void Places::handedOver(const SensorStatistics& sensor, const HandOver& handOver, bool afterMissing) {
    const bool empty = handOver.samples.empty();
    const bool discarded = handOver.filing.fate == Fate::kDiscarded;
    mNewest = empty ? Place::kSilence : discarded ? Place::kDiscardedBatch : Place::kAnywhere;
    if (!empty && mFull++ == 0) mEmptyAtStart = mEmpty;
    mEmpty = empty ? mEmpty + 1 : 0;
    for (const Lack& lack : mOpen) {
        --at(lack.place)[indexOf(lack.kind)];
        ++at(placeAfter(sensor, lack, handOver, afterMissing))[indexOf(lack.kind)];
    }
    mOpen.clear();
}

void Places::lacked(const SensorStatistics& sensor, const ExposureOutcome& outcome) {
    const Kind kind = outcome.reason->kind;
    Lack lack{kind, 0, outcome.reason->number, false, Place::kAnywhere};
    if (outcome.times) {
        lack.sofNs = outcome.times->sofNs;
        lack.early = isEarly(sensor, lack.sofNs);
    }
    if (kind == Kind::kNoNearSample && outcome.times) {
        // The time stamp of a sample that would have matched; wraps as the library's times do.
        const std::uint64_t us =
            outcome.times->startUs + static_cast<std::uint64_t>(lsc::sampleTimeOffset(*outcome.times));
        lack.place = stepAt(sensor, static_cast<std::int64_t>(us * lsc::kNsPerUs), Place::kAnywhere);
    }
    const bool open = kind == Kind::kTooFewSamples || kind == Kind::kNoLaterSample;
    if (open) lack.place = placeNow(sensor, lack);
    ++at(lack.place)[indexOf(kind)];
    if (open && mOpen.size() < kMostOpen) mOpen.push_back(lack);
}

Place Places::placeNow(const SensorStatistics& sensor, const Lack& lack) const {
    if (lack.kind == Kind::kTooFewSamples) {
        // The sensor was silent for most of the time.
        return mFull < (mFull == 0 ? mEmpty : mEmptyAtStart) ? Place::kSilence : Place::kAnywhere;
    }
    if (isEarly(sensor, lack.sofNs)) return Place::kLateHandOver;
    const bool silent = mNewest == Place::kSilence;
    return silent && !isDue(sensor, lack.sofNs) ? Place::kAnywhere : mNewest;
}

Place Places::placeAfter(const SensorStatistics& sensor, const Lack& lack, const HandOver& next,
                         bool afterMissing) const {
    if (lack.kind == Kind::kTooFewSamples) {
        const bool enough = lack.buffered + next.samples.size() >= lsc::kWindowSize;
        if (lack.early && enough) return Place::kLateHandOver;
        return mFull == 0 ? Place::kSilence : lack.place;
    }
    const bool isMissing = lack.early && afterMissing && isLater(sensor, next.timestampNs, lack.sofNs);
    if (isMissing && isDue(sensor, lack.sofNs)) return Place::kMissingHandOver;
    const Place now = placeNow(sensor, lack);
    if (now != Place::kAnywhere) return now;
    // A late exposure whose hand-over has come by now stays late: in time it would have helped.
    return stepAt(sensor, static_cast<std::int64_t>(lack.sofNs), lack.place);  // as in nsFrom()
}

}  // namespace replay
