#include "tools/replay/look/Statistics.h"

#include <algorithm>

#include "tools/replay/FrameInquiry.h"

namespace replay {
namespace {

constexpr std::int64_t kNsPerUs = 1000;

void countFate(SensorStatistics& sensor, TakenBatch::Fate fate) {
    switch (fate) {
        case TakenBatch::Fate::kSplit:
            ++sensor.split;
            [[fallthrough]];
        case TakenBatch::Fate::kFiled:
            ++sensor.filed;
            break;
        case TakenBatch::Fate::kDiscarded:
            ++sensor.discarded;
            break;
        case TakenBatch::Fate::kEmpty:
            ++sensor.empty;
            break;
    }
}

}  // namespace

// While no monitor runs, samples are not expected.
void Statistics::monitorStarted(std::int32_t sensor) {
    const auto known = mSensors.find(sensor);
    if (known != mSensors.end()) known->second.newestNs.reset();
}

void Statistics::batchTaken(const TakenBatch& batch) {
    SensorStatistics& sensor = mSensors[batch.sensor];
    countFate(sensor, batch.fate);
    for (const auto& sample : batch.samples) {
        if (sensor.newestNs && sample.timestamp <= *sensor.newestNs) continue;
        if (sensor.newestNs) {
            // Rounded. Unsigned, because time stamps may lie anywhere in 64 bits; the later one is the larger one.
            const auto step =
                static_cast<std::uint64_t>(sample.timestamp) - static_cast<std::uint64_t>(*sensor.newestNs);
            sensor.periodUs.add(step / kNsPerUs + (step % kNsPerUs >= kNsPerUs / 2 ? 1 : 0));
        }
        sensor.newestNs = sample.timestamp;
    }
}

void Statistics::exposureAsked(const ExposureOutcome& outcome) {
    SensorStatistics& sensor = mSensors[outcome.sensor];
    if (outcome.reason) {
        auto& missing = sensor.missing[static_cast<std::size_t>(outcome.reason->kind)];  // kinds count from 0
        ++missing.count;
        missing.largest = std::max(missing.largest, outcome.reason->number);
    }
    if (outcome.span) {
        sensor.matchUs.add(outcome.span->distanceUs);
        sensor.spanSamples.add(static_cast<std::uint64_t>(outcome.span->samples));  // at least 1
    }
}

}  // namespace replay
