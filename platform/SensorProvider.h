// The camera platform's provider of motion and OIS samples.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace NSCam::Utils {

// Kind of sensor that a subscription asks for. The platform defines the values; the library only passes them on.
enum class eSensorType : std::int32_t {};

// One sample. The meaning of a field other than `timestamp` depends on the sensor type it was delivered for.
struct SensorData {
    float acceleration[3];  // m/s^2, x y z of the device
    float gyro[3];          // rad/s, x y z of the device
    float oisHallX;         // hall sensor reading of the OIS lens, raw
    float oisHallY;
    float oisX;  // position of the OIS lens
    float oisY;
    float oisTarget[2];      // position that the OIS controller steers to, x y
    std::uint32_t status;    // driver flags of the sample
    std::int64_t timestamp;  // ns, in the clock of the frame time stamps
};

// One user's subscription. The instance keeps its subscriptions until they are disabled or its last reference is
// released. Thread safe. Each operation may block for as long as the sensor service does, and may throw.
// The library holds its registry lock across each, so none may call the library nor wait for a thread that does.
class SensorProvider {
public:
    // An instance for `user` (zero-terminated, read during the call), or null when the service gives none.
    static std::shared_ptr<SensorProvider> createInstance(const char* user);

    // Starts the delivery of `type` to this user at `interval` (unit defined by the platform). True when it runs.
    virtual bool enableSensor(eSensorType type, std::uint32_t interval) = 0;

    // Ends the delivery of `type`. True when it had been running.
    virtual bool disableSensor(eSensorType type) = 0;

    // Replaces `samples` with what the provider holds for `type`, in the order delivered; empty when it holds nothing.
    // Consecutive calls may overlap in time. Only the content of the list counts, not the result.
    virtual bool getAllSensorData(eSensorType type, std::vector<SensorData>& samples) = 0;

    SensorProvider(const SensorProvider&) = delete;
    SensorProvider& operator=(const SensorProvider&) = delete;
    virtual ~SensorProvider() = default;

protected:
    SensorProvider() = default;
};

}  // namespace NSCam::Utils
