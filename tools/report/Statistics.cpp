#include "tools/report/Statistics.h"

#include <algorithm>
#include <utility>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

using Fate = lsc::SampleQueue::Fate;

bool isLong(const SpanUsed& span, std::uint64_t readoutNs) {
    // Unsigned, because time stamps may lie anywhere in 64 bits; the last one is no earlier.
    const std::uint64_t ns = static_cast<std::uint64_t>(span.lastNs) - static_cast<std::uint64_t>(span.firstNs);
    return ns / lsc::kNsPerUs > 2 * (readoutNs / lsc::kNsPerUs) + lsc::kMatchWindowUs;
}

// In whole microseconds, rounded.
std::uint64_t roundedUs(std::uint64_t ns) {
    return ns / lsc::kNsPerUs + (ns % lsc::kNsPerUs >= lsc::kNsPerUs / 2 ? 1 : 0);
}

}  // namespace

bool SensorStatistics::isJittery() const {
    return periodUs.count() >= 10 * kEnough && 2 * periodUs.quantile(0.95) > 3 * periodUs.quantile(0.5);
}

std::uint64_t SensorStatistics::longestStepUs() const {
    return std::max(kLongestPeriodUs, 2 * periodUs.quantile(isJittery() ? 0.95 : 0.5));
}

// While no monitor runs, samples are not expected.
void Statistics::monitorStarted(std::int32_t sensor) {
    const auto known = mSensors.find(sensor);
    if (known == mSensors.end()) return;
    known->second.newestNs.reset();
    known->second.frame.reset();
    known->second.stuck.reset();
    if (const auto leap = std::exchange(known->second.leap, {})) known->second.clockStepUs.add(leap->us);
    known->second.places.monitorStarted();
}

void Statistics::handedOver(const HandOver& handOver) {
    SensorStatistics& sensor = mSensors[handOver.sensor];
    ++sensor.batches[handOver.filing.fate];
    sensor.samples += handOver.samples.size();
    const std::uint64_t missing = sensor.missingHandOvers();
    noteFrame(sensor, handOver);
    noteFate(sensor, handOver);
    const bool afterMissing = sensor.missingHandOvers() > missing;
    noteSamples(sensor, handOver, afterMissing);
    sensor.places.handedOver(sensor, handOver, afterMissing);
}

void Statistics::noteFrame(SensorStatistics& sensor, const HandOver& handOver) {
    constexpr std::int64_t kFarthest = 999;  // beyond it, or farther back than the buffer, the numbers start anew
    constexpr auto kBack = -static_cast<std::int64_t>(lsc::kMaxBufferedFrames);  // a small number
    std::uint64_t interval = 0;
    if (sensor.frame) {
        // Wraps as the numbers do, and is signed then.
        const std::int64_t step = static_cast<std::int32_t>(handOver.frame - sensor.frame->number);
        if (step != 0 && step >= kBack && step <= kFarthest) {
            ++sensor.frameStepCount;
            sensor.frameStepSum += step;
        }
        if (step > 0 && step <= kFarthest) {
            const auto frames = narrow<std::uint64_t>(step);
            sensor.frameSteps.add(frames);
            if (handOver.timestampNs > sensor.frame->timestampNs) {
                const std::uint64_t us = (handOver.timestampNs - sensor.frame->timestampNs) / lsc::kNsPerUs;
                interval = us / frames * sensor.usualFrameStep();
                sensor.frameUs.add(interval);
            }
        }
    }
    sensor.frame = {handOver.frame, handOver.timestampNs, interval};
    if (handOver.samples.empty()) return;
    // Unsigned: the difference wraps to the signed one.
    const auto newest = static_cast<std::uint64_t>(handOver.samples.back().timestamp);
    sensor.clock.add(handOver.timestampNs, static_cast<std::int64_t>(newest - handOver.timestampNs));
}

void Statistics::noteFate(SensorStatistics& sensor, const HandOver& handOver) {
    constexpr std::uint64_t kFarNs = 1'000'000'000;
    const Fate fate = handOver.filing.fate;
    if (fate == Fate::kFiled || fate == Fate::kSplit) sensor.stuck.reset();
    if (fate != Fate::kDiscarded || !sensor.newestNs || *sensor.newestNs < handOver.samples.back().timestamp) return;
    // Unsigned: the later one is the larger one.
    const auto ahead =
        static_cast<std::uint64_t>(*sensor.newestNs) - static_cast<std::uint64_t>(handOver.samples.back().timestamp);
    if (ahead <= kFarNs) return;
    if (!sensor.stuck) sensor.stuck = {sensor.newestFrame, *sensor.newestNs, 0};
    ++sensor.stuck->batches;
    if (!sensor.longestStuck || sensor.longestStuck->batches < sensor.stuck->batches) {
        sensor.longestStuck = sensor.stuck;
    }
}

void Statistics::noteSamples(SensorStatistics& sensor, const HandOver& handOver, bool afterMissing) {
    if (handOver.samples.empty()) return;
    // Unsigned: the difference wraps to the signed one.
    const auto newest = static_cast<std::uint64_t>(handOver.samples.back().timestamp);
    const auto differenceUs = static_cast<std::int64_t>(newest - handOver.timestampNs) / std::int64_t{lsc::kNsPerUs};
    settleLeap(sensor, differenceUs, handOver.timestampNs);
    for (const auto& sample : handOver.samples) {
        if (sensor.newestNs && sample.timestamp <= *sensor.newestNs) {
            ++sensor.repeated;
            continue;
        }
        if (sensor.newestNs) notePeriod(sensor, handOver, sample.timestamp, std::exchange(afterMissing, false));
        sensor.newestNs = sample.timestamp;
        sensor.newestFrame = handOver.frame;
        sensor.newestFrameNs = handOver.timestampNs;
    }
    sensor.differenceUs = differenceUs;
}

void Statistics::notePeriod(SensorStatistics& sensor, const HandOver& handOver, std::int64_t newNs, bool afterMissing) {
    // Unsigned, because time stamps may lie anywhere in 64 bits; the later one is the larger one.
    const std::uint64_t us =
        roundedUs(static_cast<std::uint64_t>(newNs) - static_cast<std::uint64_t>(*sensor.newestNs));
    sensor.periodUs.add(us);
    if (afterMissing) sensor.missedPeriodUs.add(us);
    if (us <= kLongestPeriodUs) return;
    const std::uint64_t framesUs = (handOver.timestampNs - sensor.newestFrameNs) / lsc::kNsPerUs;
    // The first sample of a hand-over may come a frame after its last one could have.
    const bool leaps = us > sensor.frame->intervalUs && us > framesUs + sensor.frameUs.quantile(0.5) * 3 / 2 &&
                       sensor.haveFrameTimes();
    const Place silent = leaps ? Place::kClockStep : Place::kSilence;
    sensor.places.addStep(*sensor.newestNs, newNs, afterMissing ? Place::kMissingHandOver : silent);
    if (afterMissing) return;
    if (!leaps) {
        sensor.silentPeriodUs.add(us);
        return;
    }
    if (sensor.leap) sensor.clockStepUs.add(sensor.leap->us);
    sensor.leap = {us, sensor.differenceUs, handOver.timestampNs};
}

void Statistics::settleLeap(SensorStatistics& sensor, std::int64_t differenceUs, std::uint64_t timestampNs) {
    if (!sensor.leap) return;
    const SensorStatistics::Leap leap = *sensor.leap;
    const bool over = differenceUs - leap.differenceUs < static_cast<std::int64_t>(leap.us / 2);  // of times in ns
    const bool stays = (timestampNs - leap.frameNs) / lsc::kNsPerUs > leap.us;
    if (!over && !stays) return;
    (over ? sensor.silentPeriodUs : sensor.clockStepUs).add(leap.us);
    sensor.leap.reset();
}

void Statistics::exposuresAsked(const std::vector<ExposureOutcome>& outcomes) {
    ++mFrames;
    for (const ExposureOutcome& outcome : outcomes)
        count(outcome);
}

void Statistics::count(const ExposureOutcome& outcome) {
    SensorStatistics& sensor = mSensors[outcome.sensor];
    ++sensor.exposures;
    if (outcome.reason) {
        auto& missing = sensor.missing[indexOf(outcome.reason->kind)];
        ++missing.count;
        missing.largest = std::max(missing.largest, outcome.reason->number);
        sensor.places.lacked(sensor, outcome);
    }
    if (outcome.times) {
        sensor.exposureUs.add(outcome.times->exposureUs);
        if (outcome.readoutNs != 0) sensor.readoutUs.add(outcome.readoutNs / lsc::kNsPerUs);
        auto& byShutter = sensor.frameUsByShutter;
        const bool known = byShutter.contains(outcome.readoutNs) || byShutter.size() < SensorStatistics::kMaxShutters;
        if (known && outcome.readoutNs != 0) {
            Histogram& frames = byShutter[outcome.readoutNs];
            if (sensor.frame && sensor.frame->intervalUs != 0) frames.add(sensor.frame->intervalUs);
        }
    }
    if (outcome.span) {
        sensor.spanReadoutUs.add(outcome.readoutNs / lsc::kNsPerUs);
        sensor.matchUs.add(outcome.span->distanceUs);
        sensor.spanSamples.add(narrow<std::uint64_t>(outcome.span->samples));
        if (isLong(*outcome.span, outcome.readoutNs)) ++sensor.longSpans;
    }
}

}  // namespace replay
