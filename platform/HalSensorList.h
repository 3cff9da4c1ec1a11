// The camera platform's sensor list and the sensor objects through which commands reach a sensor driver.
#pragma once

#include <cstdint>

namespace NSCam {

// Commands of the sensor drivers.
// OTP layout: the first argument is the address of the sensor's index (signed 32-bit), the second that of a record of
// eleven 32-bit words, which the driver fills; the third is 0.
inline constexpr unsigned long CMD_GET_OTP_INFO = 0x4049;
// Rolling-shutter time: the first argument is the address of an unsigned 32-bit number, which receives the time in ns;
// the second is 0; the third is the address of the sensor mode (unsigned 32-bit).
inline constexpr unsigned long CMD_GET_ROLLING_SHUTTER = 0x400F;

// One user's handle on one camera sensor. Made by IHalSensorList::createSensor, given back with release().
// The library holds a lock across each operation, here and of the list, so none may call the library nor wait for a
// thread that does.
class IHalSensor {
public:
    // Sends `command` to the driver of device `deviceId`. The three arguments are values or addresses, as the command
    // defines; addresses must stay valid for the call. A command that the driver does not know, or cannot answer,
    // leaves the memory behind the arguments as it was. The result is the driver's status.
    virtual int sendCommand(std::uint32_t deviceId, unsigned long command, unsigned long argument1,
                            unsigned long argument2, unsigned long argument3) = 0;

    // Gives the object back; `user` is the name it was created for. The object must not be used afterwards.
    virtual void release(const char* user) = 0;

protected:
    IHalSensor() = default;
    IHalSensor(const IHalSensor&) = default;
    IHalSensor& operator=(const IHalSensor&) = default;
    ~IHalSensor() = default;  // release() is the only way to end an object
};

// Every sensor of the device. Thread safe. Each operation may throw.
class IHalSensorList {
public:
    // The process-wide list, or null while the platform has none. Never destroyed.
    static IHalSensorList* get();

    // Device id of the sensor at `index`, to be passed with its commands; 0 for an index that the list does not know.
    virtual std::uint32_t querySensorDeviceId(int index) = 0;

    // A sensor object for `user` (zero-terminated, read during the call), or null when the sensor cannot be opened.
    // The caller releases it under the same name.
    virtual IHalSensor* createSensor(const char* user, int index) = 0;

protected:
    IHalSensorList() = default;
    IHalSensorList(const IHalSensorList&) = default;
    IHalSensorList& operator=(const IHalSensorList&) = default;
    ~IHalSensorList() = default;
};

}  // namespace NSCam
