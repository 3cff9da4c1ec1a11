// Hears what a session does while it is played. Everything that looks at a session is one: statistics, recording.
#pragma once

#include <cstdint>

#include "customer/aaa/aaa/lsc/SampleBatch.h"

namespace replay {

struct ExposureOutcome;

// The samples that one UpdateSensorData call took over from the provider, and what the buffer made of them.
struct TakenBatch {
    enum class Fate {
        kFiled,
        kSplit,      // overlapped the batch before it; the two were divided anew at `splitTimeNs`
        kDiscarded,  // began no later than the batch before it
        kEmpty,      // the provider held nothing
    };

    std::int32_t sensor;
    std::uint32_t frame;
    Fate fate;
    const lsc::Samples& samples;   // in time order, before any division
    std::int64_t splitTimeNs = 0;  // of a split one
};

class Observer {
public:
    Observer() = default;
    virtual ~Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    // The sensor's monitor began to run; it did not before.
    virtual void monitorStarted(std::int32_t sensor) = 0;
    virtual void batchTaken(const TakenBatch& batch) = 0;
    virtual void exposureAsked(const ExposureOutcome& outcome) = 0;
};

}  // namespace replay
