#include "tools/replay/look/Recording.h"

#include <algorithm>

namespace replay {

void Recording::batchTaken(const TakenBatch& batch) {
    SensorRecording& sensor = mSensors[batch.sensor];
    for (const auto& sample : batch.samples)
        sensor.samples.push_back({sample.timestamp, sample.oisX, sample.oisY});
    if (batch.fate == TakenBatch::Fate::kSplit) {
        sensor.events.push_back({batch.fate, batch.splitTimeNs, batch.frame, batch.samples.size()});
    } else if (batch.fate == TakenBatch::Fate::kDiscarded) {
        sensor.events.push_back({batch.fate, batch.samples.front().timestamp, batch.frame, batch.samples.size()});
    }
}

void Recording::exposureAsked(const ExposureOutcome& outcome) {
    mSensors[outcome.sensor].exposures.push_back(outcome);
}

void Recording::finish() {
    for (auto& [id, sensor] : mSensors) {
        std::ranges::stable_sort(sensor.samples, {}, &RecordedSample::timeNs);
        const auto repeated = std::ranges::unique(sensor.samples);
        sensor.samples.erase(repeated.begin(), repeated.end());
        sensor.samples.shrink_to_fit();
    }
}

std::int64_t Recording::beginNs() const {
    std::optional<std::int64_t> begin;
    for (const auto& [id, sensor] : mSensors) {
        if (!sensor.samples.empty()) begin = std::min(begin.value_or(INT64_MAX), sensor.samples.front().timeNs);
    }
    if (begin) return *begin;
    for (const auto& [id, sensor] : mSensors) {
        for (const ExposureOutcome& outcome : sensor.exposures) {
            if (const auto times = timesOf(outcome)) begin = std::min(begin.value_or(INT64_MAX), times->read);
        }
    }
    return begin.value_or(0);
}

std::optional<ExposureTimesNs> timesOf(const ExposureOutcome& outcome) {
    constexpr std::uint64_t kMax = INT64_MAX / 4;  // sums and differences of such times fit
    if (!outcome.exposure) return std::nullopt;
    const auto& [type, start, exposed] = *outcome.exposure;
    if (start == 0 || start > kMax || exposed > kMax || outcome.readoutNs > kMax) return std::nullopt;
    const auto read = static_cast<std::int64_t>(start);  // each fits, as tested
    return ExposureTimesNs{read - static_cast<std::int64_t>(exposed), read,
                           read + static_cast<std::int64_t>(outcome.readoutNs)};
}

bool isUnserved(const ExposureOutcome& outcome) {
    return outcome.reason && outcome.reason->kind != Reason::Kind::kAlreadyWritten;
}

}  // namespace replay
