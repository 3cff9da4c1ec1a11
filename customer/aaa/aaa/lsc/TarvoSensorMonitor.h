// One camera sensor's subscription to the OIS hall samples, and the buffer of those samples by frame. The registry in
// TarvoShadingCustomUtil creates, finds and ends monitors, and runs every operation of a monitor under its own lock.
// Operations may throw. A buffer is then unchanged; a monitor may keep a new provider instance, and samples that it had
// fetched are lost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "aaa/aaa/lsc/ThreadAnnotations.h"
#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"

// A sensor's queue of samples (SampleQueue.h) with a lock and messages. Synchronises itself.
class TarvoShadingCustomUtil::TarvoSensorData {
public:
    TarvoSensorData(std::uint32_t maxQueueSize, std::int32_t logLevel);

    // Files `data` under `frame`, as SampleQueue::push() does.
    void pushValue(std::uint32_t frame, lsc::Samples& data) LSC_EXCLUDES(mMutex);

    // Replaces `out` with the samples filed under `frame`, the newest entry's when there are several.
    void getDataByFrame(std::uint32_t frame, lsc::Samples& out) LSC_EXCLUDES(mMutex);

    // Replaces `out` with the 100 samples around the first one at or after `timestamp` (ns, unsigned).
    void getDataByTimestamp(std::uint64_t timestamp, lsc::Samples& out) LSC_EXCLUDES(mMutex);

    // Entries held.
    std::size_t frameCount() LSC_EXCLUDES(mMutex);

    // Drops every entry and releases the memory.
    void clear() LSC_EXCLUDES(mMutex);

private:
    const std::int32_t mLogLevel;
    std::mutex mMutex;
    lsc::SampleQueue mQueue LSC_GUARDED_BY(mMutex);
    bool mDropReported LSC_GUARDED_BY(mMutex) = false;  // reported once, until the next clear()
};

// Not synchronised: the registry's lock is held around every call and every access to the public fields. Their
// annotation is the registry's own: a monitor is reached through it alone, and a field of one object cannot be declared
// guarded by a lock of another.
class TarvoShadingCustomUtil::TarvoSensorMonitor {
public:
    TarvoSensorMonitor(std::int32_t logLevel, std::int32_t sensorId, NSCam::Utils::eSensorType sensorType);
    ~TarvoSensorMonitor();
    TarvoSensorMonitor(const TarvoSensorMonitor&) = delete;
    TarvoSensorMonitor& operator=(const TarvoSensorMonitor&) = delete;

    // Takes a provider instance unless one is held, and starts the delivery unless it runs. Starting empties the
    // buffer. Returns whether the delivery runs.
    bool enableSensor();

    // Fetches what the provider holds and files it under `frame`; `timestamp` (ns) is only logged.
    void updateSensorData(std::uint32_t frame, std::uint64_t timestamp);

    // Samples around `timestamp` (ns) or, when that is 0, those of `frame`. Both 0 is an error; `out` is untouched
    // when there are none.
    void getSensorData(lsc::Samples& out, std::uint32_t frame, std::uint64_t timestamp);

    // Ends the delivery, gives the provider instance back and empties the buffer. Result and exceptions of the provider
    // are ignored.
    void disableSensor() noexcept;

    const std::int32_t mLogLevel;
    const std::int32_t mSensorId;
    const NSCam::Utils::eSensorType mSensorType;
    std::uint32_t mRollingShutter = 0;  // ns, of mSensorMode; 0 until stored
    std::uint32_t mSensorMode = 0;
    bool mEnabled = false;

private:
    TarvoSensorData mSensorData;
    std::shared_ptr<NSCam::Utils::SensorProvider> mSensorProvider;
};
