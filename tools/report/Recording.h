// A session kept whole for a picture: samples, exposures and what a device made of them, sensor by sensor.
// Takes 16 bytes a sample and some 350 an exposure, so it is made on request only.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"
#include "tools/report/Agreement.h"
#include "tools/report/Extent.h"
#include "tools/session/Expectation.h"

namespace replay {

struct RecordedSample {
    std::int64_t timeNs;
    float x;  // oisX and oisY: what positions are computed from
    float y;

    bool operator==(const RecordedSample&) const = default;
};

struct RecordedExposure {
    // What a device made of it.
    struct Device {
        std::optional<Position> position;
        Agreement agreement;
    };

    // Whether it has no position, neither from this call nor from an earlier one.
    bool isUnserved() const { return outcome.reason && outcome.reason->kind != Reason::Kind::kAlreadyWritten; }

    ExposureOutcome outcome;
    std::optional<Device> device;

    bool differs() const { return device && !isMet(device->agreement); }
};

struct SensorRecording {
    std::vector<RecordedSample> samples;  // in time order after finish(), each once however often it was handed over
    std::vector<RecordedExposure> exposures;
};

class Recording : public Observer {
public:
    // Positions of a device that differ by no more than `tolerance`, in x and in y, count as met.
    explicit Recording(double tolerance = kRounding) : mTolerance(tolerance) {}

    void handedOver(const HandOver& handOver) override;
    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override;
    void expected(const Expectation& expectation) override;
    // Puts the samples in order; to be called once, after the session.
    void finish();

    const std::map<std::int32_t, SensorRecording>& sensors() const { return mSensors; }
    const Extent& extent() const { return mExtent; }

private:
    const double mTolerance;
    std::map<std::int32_t, SensorRecording> mSensors;
    std::size_t mNewest = 0;  // exposures of the newest call; all of one sensor
    Extent mExtent;
};

}  // namespace replay
