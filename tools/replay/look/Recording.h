// A session kept whole for a picture or a trace: samples, exposures and what happened to batches, sensor by sensor.
// Takes 16 bytes a sample and some 300 an exposure, so it is made on request only.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "tools/replay/FrameInquiry.h"
#include "tools/replay/Observer.h"

namespace replay {

struct RecordedSample {
    std::int64_t timeNs;
    float x;  // oisX and oisY: what positions are computed from
    float y;

    bool operator==(const RecordedSample&) const = default;
};

// A batch that was split or discarded.
struct RecordedEvent {
    TakenBatch::Fate fate;
    std::int64_t timeNs;  // split time; first sample of a discarded batch
    std::uint32_t frame;
    std::size_t samples;  // in the batch
};

struct SensorRecording {
    std::vector<RecordedSample> samples;  // in time order after finish(), each once however often it was handed over
    std::vector<ExposureOutcome> exposures;
    std::vector<RecordedEvent> events;
};

class Recording : public Observer {
public:
    void monitorStarted(std::int32_t /*sensor*/) override {}
    void batchTaken(const TakenBatch& batch) override;
    void exposureAsked(const ExposureOutcome& outcome) override;
    // Puts the samples in order; to be called once, after the session.
    void finish();

    const std::map<std::int32_t, SensorRecording>& sensors() const { return mSensors; }
    // Time stamp of the first sample of all sensors; without samples, the first start of frame; 0 without either.
    std::int64_t beginNs() const;

private:
    std::map<std::int32_t, SensorRecording> mSensors;
};

// When an exposure's rows were exposed and read, in ns of the session's clock.
struct ExposureTimesNs {
    std::int64_t exposed;   // the first row begins to be exposed
    std::int64_t read;      // the first row is read: the start of frame
    std::int64_t finished;  // the last row is read
};
// Nothing for an exposure without times, or with times that no session lasts.
std::optional<ExposureTimesNs> timesOf(const ExposureOutcome& outcome);

// Whether the exposure has no position, neither from this call nor from an earlier one.
bool isUnserved(const ExposureOutcome& outcome);

}  // namespace replay
