// Keeps account of the monitors of a session and of what their buffers hold, which the library does not tell. The
// account holds what the buffers hold as long as the monitors were registered by this session.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "customer/aaa/aaa/lsc/SampleQueue.h"

namespace replay {

class SampleAccount {
public:
    // The sensor has a monitor.
    void registered(std::int32_t sensor) { mMonitors.try_emplace(sensor); }
    // The sensor's monitor runs. Whether it did not before; it then begins with an empty buffer.
    bool started(std::int32_t sensor);
    void unregistered(std::int32_t sensor) { mMonitors.erase(sensor); }

    // Files a hand-over for the sensor's monitor; nothing without one.
    std::optional<lsc::SampleQueue::Filing> file(std::int32_t sensor, std::uint32_t frame, std::uint64_t timestampNs,
                                                 lsc::Samples samples);

    bool isRegistered(std::int32_t sensor) const { return mMonitors.contains(sensor); }
    std::vector<std::int32_t> registeredSensors() const;
    // Samples in the sensor's buffer, and the time stamp of the newest one.
    std::size_t buffered(std::int32_t sensor) const;
    std::optional<std::int64_t> newestNs(std::int32_t sensor) const;
    // Number of the frame that began at or before `startNs`: that of the newest hand-over with such a time stamp, or,
    // when the last kMaxBufferedFrames ones have none, of the newest of all. Nothing before the first.
    std::optional<std::uint32_t> frameAt(std::int32_t sensor, std::uint64_t startNs) const;

private:
    struct Monitor {
        bool running = false;
        std::deque<std::pair<std::uint64_t, std::uint32_t>> frames;  // time stamps and numbers, the newest first
        lsc::SampleQueue queue{lsc::kMaxBufferedFrames};
    };

    std::map<std::int32_t, Monitor> mMonitors;
};

}  // namespace replay
