// The sensor list and the sensor objects, answering from what setSensor() said.
#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "platform/HalSensorList.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

namespace host {
namespace {

constexpr int kCommandDone = 0;
constexpr int kCommandFailed = -1;

// A command carries addresses as integers.
void* addressOf(unsigned long argument) {
    return reinterpret_cast<void*>(argument);
}

template <typename T>
JournalValue numberBehind(unsigned long argument) {
    if (!argument) return false;
    T number{};
    std::memcpy(&number, addressOf(argument), sizeof number);
    return std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>{number};
}

// Adds what the command says with its arguments: the number behind an address, whether there is an address to write to,
// or the argument itself where it means nothing.
void recordCommand(internal::Recorded& call, unsigned long command, unsigned long argument1, unsigned long argument2,
                   unsigned long argument3) {
    if (command == NSCam::CMD_GET_OTP_INFO) {
        call.with("argument1", [&] { return numberBehind<std::int32_t>(argument1); });
        call.with("argument2", argument2 != 0).with("argument3", argument3);
    } else if (command == NSCam::CMD_GET_ROLLING_SHUTTER) {
        call.with("argument1", [&] { return numberBehind<std::uint32_t>(argument1); });
        call.with("argument2", argument2);
        call.with("argument3", [&] { return numberBehind<std::uint32_t>(argument3); });
    } else {
        call.with("argument1", argument1).with("argument2", argument2).with("argument3", argument3);
    }
}

// One user's handle. Thread safe.
class HostSensor final : public NSCam::IHalSensor {
public:
    HostSensor(const char* user, int index, std::size_t generation)
        : mUser(user ? user : ""), mIndex(index), mGeneration(generation) {}

    int sendCommand(std::uint32_t deviceId, unsigned long command, unsigned long argument1, unsigned long argument2,
                    unsigned long argument3) override;
    void release(const char* user) override;

private:
    int answerOtpLayout(std::uint32_t deviceId, void* layout) const;
    int answerRollingShutter(std::uint32_t deviceId, void* time, const void* mode) const;

    const std::string mUser;
    const int mIndex;
    const std::size_t mGeneration;  // of the list at creation
};

struct SensorState {
    std::map<int, Sensor> sensors;
    bool listPresent = true;
    // Every object that is not released, so that one whose release failed stays reachable and usable.
    std::map<const HostSensor*, std::unique_ptr<HostSensor>> objects;
    SensorObjectCounts counts;
    // Number of resets; an object from before the last one does not count any more.
    std::size_t generation = 0;

    const Sensor* find(int index) const {
        const auto found = sensors.find(index);
        return found == sensors.end() ? nullptr : &found->second;
    }

    // The sensor whose driver answers: a handle reaches its own sensor's device and no other.
    const Sensor* findDriver(int index, std::uint32_t deviceId) const {
        const Sensor* sensor = find(index);
        return sensor && sensor->deviceId == deviceId ? sensor : nullptr;
    }
};

// Counted before anything of a release can fail.
constinit std::atomic<std::size_t> gReleaseCalls{0};

internal::Guarded<SensorState>& sensorState() {
    return internal::processWide<internal::Guarded<SensorState>>();
}

int HostSensor::sendCommand(std::uint32_t deviceId, unsigned long command, unsigned long argument1,
                            unsigned long argument2, unsigned long argument3) {
    internal::Recorded call(Operation::kSensorCommand);
    recordCommand(call.with("sensor", mIndex).with("device", deviceId).with("command", command), command, argument1,
                  argument2, argument3);
    call.begin();
    int status = kCommandFailed;
    if (command == NSCam::CMD_GET_OTP_INFO) {
        status = answerOtpLayout(deviceId, addressOf(argument2));
    } else if (command == NSCam::CMD_GET_ROLLING_SHUTTER) {
        status = answerRollingShutter(deviceId, addressOf(argument1), addressOf(argument3));
    }
    internal::enter(Operation::kSensorCommandDone);
    return call.answer("status", status);
}

int HostSensor::answerOtpLayout(std::uint32_t deviceId, void* layout) const {
    if (!layout) return kCommandFailed;
    const auto state = sensorState().lock();
    const Sensor* sensor = state->findDriver(mIndex, deviceId);
    if (!sensor || !sensor->otpLayout) return kCommandFailed;
    std::memcpy(layout, sensor->otpLayout->data(), sizeof *sensor->otpLayout);
    return kCommandDone;
}

int HostSensor::answerRollingShutter(std::uint32_t deviceId, void* time, const void* mode) const {
    if (!time || !mode) return kCommandFailed;
    std::uint32_t wanted = 0;
    std::memcpy(&wanted, mode, sizeof wanted);
    const auto state = sensorState().lock();
    const Sensor* sensor = state->findDriver(mIndex, deviceId);
    if (!sensor) return kCommandFailed;
    const auto found = sensor->rollingShutter.find(wanted);
    if (found == sensor->rollingShutter.end()) return kCommandFailed;
    std::memcpy(time, &found->second, sizeof found->second);
    return kCommandDone;
}

void HostSensor::release(const char* user) {
    ++gReleaseCalls;
    internal::Recorded call(Operation::kReleaseSensor);
    call.with("sensor", mIndex).with("user", user).begin();
    std::unique_ptr<HostSensor> self;  // destroyed last, when nothing uses this object any more
    const auto state = sensorState().lock();
    call.done();
    const auto found = state->objects.find(this);
    if (found == state->objects.end()) return;
    if (mGeneration == state->generation) {
        ++state->counts.released;
        if (!user || mUser != user) state->counts.usersMatch = false;
    }
    self = std::move(found->second);
    state->objects.erase(found);
}

class HostSensorList final : public NSCam::IHalSensorList {
public:
    std::uint32_t querySensorDeviceId(int index) override {
        internal::Recorded call(Operation::kSensorDeviceId);
        call.with("sensor", index).begin();
        const auto state = sensorState().lock();
        const Sensor* sensor = state->find(index);
        return call.answer("result", sensor ? sensor->deviceId : 0);
    }

    NSCam::IHalSensor* createSensor(const char* user, int index) override {
        internal::Recorded call(Operation::kCreateSensor);
        call.with("user", user).with("sensor", index).begin();
        const auto state = sensorState().lock();
        const Sensor* sensor = state->find(index);
        if (!sensor || !sensor->openable) return call.answer<HostSensor>(nullptr);
        auto object = std::make_unique<HostSensor>(user, index, state->generation);
        HostSensor* const created = object.get();
        state->objects.emplace(created, std::move(object));
        ++state->counts.created;
        return call.answer(created);
    }
};

constinit HostSensorList gSensorList;

}  // namespace

void setSensor(int sensorId, Sensor sensor) {
    // The OTP bytes are the provider's: the driver never answers with them.
    internal::setOtp(sensorId, std::exchange(sensor.otp, std::nullopt));
    sensorState().lock()->sensors.insert_or_assign(sensorId, std::move(sensor));
}

void setSensorListPresent(bool present) {
    sensorState().lock()->listPresent = present;
}

SensorObjectCounts sensorObjectCounts() {
    SensorObjectCounts counts = sensorState().lock()->counts;
    counts.releaseCalls = gReleaseCalls;
    return counts;
}

void internal::resetSensors() {
    const auto state = sensorState().lock();
    state->sensors.clear();
    state->listPresent = true;
    state->counts = {};
    gReleaseCalls = 0;
    ++state->generation;
}

}  // namespace host

NSCam::IHalSensorList* NSCam::IHalSensorList::get() {
    host::internal::Recorded call(host::Operation::kSensorListGet);
    call.begin();
    return call.answer(host::sensorState().lock()->listPresent ? &host::gSensorList : nullptr);
}
