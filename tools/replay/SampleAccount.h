// Keeps account of the samples of a session: what the provider holds for each type, which type each monitor has, and
// what each monitor's buffer holds. The library tells none of this. The account follows the library's own rules for
// batches (SampleBatch.h), so it holds what the buffers hold as long as the monitors were registered by this session.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "customer/aaa/aaa/lsc/SampleWindow.h"
#include "platform/SensorProvider.h"
#include "platform/host/Host.h"
#include "tools/replay/Observer.h"

namespace replay {

class SampleAccount {
public:
    // `observers` hear of monitors that start and of every batch that is taken over; they and the list must outlive the
    // account.
    explicit SampleAccount(const std::vector<Observer*>& observers) : mObservers(observers) {}

    // The provider now holds these samples of `type`, too.
    void delivered(NSCam::Utils::eSensorType type, const lsc::Samples& samples);

    // The sensor has a monitor; the type of one that it had before stands.
    void registered(std::int32_t sensor, NSCam::Utils::eSensorType type) { mMonitors.try_emplace(sensor, type); }
    // The sensor's monitor runs. One that did not run before begins with an empty buffer.
    void started(std::int32_t sensor);
    void unregistered(std::int32_t sensor) { mMonitors.erase(sensor); }

    // Runs `update`, an UpdateSensorData call for the sensor, and files what it fetched. Uses the host layer's hook.
    template <typename Update>
    void watch(std::int32_t sensor, std::uint32_t frame, Update&& update) {
        bool fetched = false;
        {
            const Hooked hooked(fetched);
            update();
        }
        if (fetched) took(sensor, frame);
    }

    bool isRegistered(std::int32_t sensor) const { return mMonitors.contains(sensor); }
    // Samples in the sensor's buffer, and the time stamp of the newest one.
    std::size_t buffered(std::int32_t sensor) const;
    std::optional<std::int64_t> newestNs(std::int32_t sensor) const;
    // Samples fetched so far, for all sensors.
    std::uint64_t filed() const { return mFiled; }

private:
    struct Monitor {
        explicit Monitor(NSCam::Utils::eSensorType its) : type(its) {}

        const NSCam::Utils::eSensorType type;
        bool running = false;
        lsc::FrameQueue queue;
    };

    // Holds the host layer's hook and sets a flag when samples are fetched.
    class Hooked {
    public:
        explicit Hooked(bool& fetched) {
            host::setHook([&fetched](host::Operation operation) {
                if (operation == host::Operation::kGetAllSensorData) fetched = true;
            });
        }
        ~Hooked() { host::setHook(nullptr); }
        Hooked(const Hooked&) = delete;
        Hooked& operator=(const Hooked&) = delete;
    };

    void took(std::int32_t sensor, std::uint32_t frame);
    const Monitor* find(std::int32_t sensor) const;

    const std::vector<Observer*>& mObservers;
    std::map<NSCam::Utils::eSensorType, lsc::Samples> mHeld;
    std::map<std::int32_t, Monitor> mMonitors;
    std::uint64_t mFiled = 0;
};

}  // namespace replay
