// The host platform's journal and hook: every operation is in both, with its arguments and what it answered.
#include <gmock/gmock.h>

#include <array>
#include <future>
#include <map>
#include <stdexcept>

#include "platform/CustomerData.h"
#include "platform/HalSensorList.h"
#include "platform/OtpData.h"
#include "platform/Properties.h"
#include "platform/host/Journal.h"
#include "tests/support/Scene.h"

namespace {

using NSCam::IMetadata;
using NSCam::Utils::eSensorType;
using NSCam::Utils::SensorProvider;
using testing::IsEmpty;

constexpr eSensorType kType{5};

class HostJournal : public test::HostTest {};

std::string listed(const host::MetadataValues& values) {
    return std::visit(
        [](const auto& its) {
            std::string text;
            if constexpr (requires { its.begin(); }) {
                for (const auto value : its)
                    text.append(text.empty() ? "" : ",").append(std::to_string(value));
            } else {
                text = std::to_string(its.size()) + " bytes";
            }
            return text;
        },
        values);
}

std::string listed(const host::JournalEntry& entry) {
    std::string text(host::nameOf(entry.operation));
    for (const auto& [name, value] : entry.fields) {
        text.append(" ").append(name).append(":");
        std::visit(
            [&text](const auto& its) {
                if constexpr (requires { std::to_string(its); }) text += std::to_string(its);
                if constexpr (std::is_same_v<decltype(its), const std::string&>) text += its;
                if constexpr (std::is_same_v<decltype(its), const host::MetadataValues&>) text += listed(its);
            },
            value);
    }
    return text;
}

TEST_F(HostJournal, HoldsWhatEndedWhileItWasOn) {
    const auto provider = SensorProvider::createInstance("user");
    EXPECT_THAT(host::takeJournal(), IsEmpty());
    host::setJournal(true);
    host::setFailures({.throwing = {host::Operation::kEnableSensor}});
    EXPECT_THROW(provider->enableSensor(kType, 9), std::runtime_error);
    host::setFailures({});
    std::async(std::launch::async, [&] { EXPECT_TRUE(provider->enableSensor(kType, 3)); }).get();
    const auto journal = host::takeJournal();
    ASSERT_EQ(journal.size(), 2U);
    EXPECT_EQ(listed(journal[0]), "SensorProvider::enableSensor user:user type:5 interval:9 threw:1");
    EXPECT_EQ(listed(journal[1]), "SensorProvider::enableSensor user:user type:5 interval:3 result:1");
    provider->disableSensor(kType);
    host::reset();
    provider->disableSensor(kType);
    EXPECT_THAT(host::takeJournal(), IsEmpty());
}

// One of each, and of each way to end.
void askEverything() {
    NSCam::IHalSensorList* const list = NSCam::IHalSensorList::get();
    list->querySensorDeviceId(1);
    list->createSensor("user", 2);
    NSCam::IHalSensor* const handle = list->createSensor("user", 1);
    handle->sendCommand(4, 1, 11, 12, 13);
    std::int32_t id = 1;
    std::array<std::uint8_t, 44> layout = {};
    handle->sendCommand(4, NSCam::CMD_GET_OTP_INFO, reinterpret_cast<unsigned long>(&id),
                        reinterpret_cast<unsigned long>(&layout), 3);
    handle->sendCommand(4, NSCam::CMD_GET_OTP_INFO, 0, 0, 0);
    std::uint32_t time = 7;
    std::uint32_t mode = test::kMode;
    handle->sendCommand(4, NSCam::CMD_GET_ROLLING_SHUTTER, reinterpret_cast<unsigned long>(&time), 2,
                        reinterpret_cast<unsigned long>(&mode));
    handle->sendCommand(4, NSCam::CMD_GET_ROLLING_SHUTTER, 0, 0, reinterpret_cast<unsigned long>(&mode));
    handle->sendCommand(4, NSCam::CMD_GET_ROLLING_SHUTTER, reinterpret_cast<unsigned long>(&time), 0, 0);
    handle->release("user");
    const auto provider = SensorProvider::createInstance("user");
    std::vector<NSCam::Utils::SensorData> samples;
    provider->enableSensor(kType, 1);
    provider->getAllSensorData(kType, samples);
    provider->disableSensor(kType);
    CustomerData::getInstance()->customMetadata()->getCameraModeName();
    OTPData data = {};
    TarvoOTPData::getInstance()->getOTPData(1, data);
    NSCam::Utils::Properties::property_get_int32("key", 5);
    NSCam::Utils::Properties::property_get_int32(nullptr, 6);
    IMetadata metadata;
    metadata.burstWrite([](IMetadata::BurstEntry& entry) {
        const double values[] = {1, 2};
        const IMetadata::Memory block;
        entry.writeEntries(7, values, 2, 8);
        entry.writeEntries(9, &block, 1, 8);
        entry.writeEntries(9, &block, 2, 8);
    });
    metadata.burstRead([](const IMetadata::BurstEntry& entry) {
        double value = 0;
        std::vector<double> values;
        entry.readEntry(7, value, 1);
        entry.readEntries(6, values);
        return 5;
    });
    metadata.burstRead(nullptr);
}

constexpr char kEverything[] = R"(
IHalSensorList::get result:1
IHalSensorList::querySensorDeviceId sensor:1 result:4
IHalSensorList::createSensor user:user sensor:2 result:0
IHalSensorList::createSensor user:user sensor:1 result:1
IHalSensor::sendCommand sensor:1 device:4 command:1 argument1:11 argument2:12 argument3:13 status:-1
IHalSensor::sendCommand sensor:1 device:4 command:16457 argument1:1 argument2:1 argument3:3 status:0
IHalSensor::sendCommand sensor:1 device:4 command:16457 argument1:0 argument2:0 argument3:0 status:-1
IHalSensor::sendCommand sensor:1 device:4 command:16399 argument1:7 argument2:2 argument3:2 status:0
IHalSensor::sendCommand sensor:1 device:4 command:16399 argument1:0 argument2:0 argument3:2 status:-1
IHalSensor::sendCommand sensor:1 device:4 command:16399 argument1:10000000 argument2:0 argument3:0 status:-1
IHalSensor::release sensor:1 user:user
SensorProvider::createInstance user:user result:1
SensorProvider::enableSensor user:user type:5 interval:1 result:1
SensorProvider::getAllSensorData user:user type:5 before:0 samples:2 result:1
SensorProvider::disableSensor user:user type:5 result:1
CustomerData::getInstance result:1
CustomerData::customMetadata result:1
CustomMetadata::getCameraModeName result:
TarvoOTPData::getInstance result:1
TarvoOTPData::getOTPData sensor:1 zeroed:1 stored:1 bytes:1
Properties::property_get_int32 key:key default:5 result:5
Properties::property_get_int32 key: default:6 result:6
Storage::writeEntries tag:7 double:1.000000,2.000000 count:2 options:8 status:0
Storage::writeEntries tag:9 memory:0 bytes count:1 options:8 status:0
Storage::writeEntries tag:9 count:2 options:8 status:-1
IMetadata::burstWrite
Storage::readEntry tag:7 type:double index:1 status:0
Storage::readEntries tag:6 type:double status:-1
IMetadata::burstRead status:5
IMetadata::burstRead status:-1)";

TEST_F(HostJournal, NamesEveryOperationThatTheHookSees) {
    host::Sensor sensor = test::calibratedSensor();
    sensor.deviceId = 4;
    host::setSensor(1, sensor);
    host::deliverSamples(kType, {test::sample(1), test::sample(2)});
    host::setJournal(true);
    std::map<host::Operation, int> begun;
    host::setHook([&](host::Operation operation) { ++begun[operation]; });
    askEverything();
    begun.erase(host::Operation::kSensorCommandDone);  // which the journal has with its command
    std::string all;
    for (const auto& entry : host::takeJournal()) {
        all += "\n" + listed(entry);
        --begun[entry.operation];
    }
    EXPECT_EQ(all, kEverything);
    for (const auto& [operation, surplus] : begun)
        EXPECT_EQ(surplus, 0) << host::nameOf(operation);
    // Sinks hear of log entries, the journal does not.
    EXPECT_EQ(host::nameOf(host::Operation::kULogWrite), "ULogger::write");
    EXPECT_EQ(host::nameOf(host::Operation::kULogAssert), "ULogger::onAssert");
}

}  // namespace
