// The host platform keeps the promises of the declarations that it implements: tests and sessions of the library mean
// nothing without them.
#include <gmock/gmock.h>

#include <future>
#include <memory>
#include <stdexcept>

#include "platform/AndroidLog.h"
#include "platform/CustomerData.h"
#include "platform/HalSensorList.h"
#include "platform/OtpData.h"
#include "platform/Properties.h"
#include "platform/ULogger.h"
#include "platform/host/Journal.h"
#include "tests/support/Scene.h"

namespace {

using NSCam::IMetadata;
using NSCam::Utils::eSensorType;
using NSCam::Utils::SensorProvider;
using NSCam::Utils::ULog::ULogger;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr eSensorType kType{5};

class Host : public test::HostTest {
protected:
    static std::vector<std::int64_t> fetched(SensorProvider& provider, eSensorType type) {
        std::vector<NSCam::Utils::SensorData> samples = {test::sample(99)};
        provider.getAllSensorData(type, samples);
        return test::stamps(samples);
    }

    static OTPData otpOf(int sensor) {
        OTPData data = {};
        TarvoOTPData::getInstance()->getOTPData(sensor, data);
        return data;
    }
};

// Before any set-up, in a process of its own.
TEST(HostAtStart, HasAllItsParts) {
    EXPECT_NE(NSCam::IHalSensorList::get(), nullptr);
    EXPECT_NE(SensorProvider::createInstance("user"), nullptr);
    EXPECT_NE(TarvoOTPData::getInstance(), nullptr);
    EXPECT_NE(CustomerData::getInstance(), nullptr);
    EXPECT_NE(ULogger::sULogger, nullptr);
    EXPECT_EQ(ULogger::sMode, 0);
    EXPECT_EQ(ULogger::sDetailsLevel, 0U);
    EXPECT_EQ(ULogger::sNormalDetailsMask, 0U);
    EXPECT_EQ(host::sensorObjectCounts().releaseCalls, 0U);
    EXPECT_THAT(host::takeJournal(), IsEmpty());
}

TEST_F(Host, ProvidersHandOverEachSampleOnce) {
    const auto one = SensorProvider::createInstance("one");
    const auto other = SensorProvider::createInstance("other");
    host::deliverSamples(kType, {test::sample(2), test::sample(1)});
    host::deliverSamples(kType, {test::sample(3)});
    EXPECT_THAT(fetched(*one, eSensorType{6}), IsEmpty());
    EXPECT_THAT(fetched(*one, kType), ElementsAre(2, 1, 3));
    EXPECT_THAT(fetched(*other, kType), IsEmpty());
}

TEST_F(Host, HandOversAreHeardOfWithTheirSamples) {
    const auto provider = SensorProvider::createInstance("user");
    std::vector<std::vector<std::int64_t>> heard;
    host::setHandOverListener([&heard](eSensorType type, const std::vector<NSCam::Utils::SensorData>& samples) {
        EXPECT_EQ(type, kType);
        host::deliverSamples(type, {});  // no lock is held
        heard.push_back(test::stamps(samples));
    });
    host::deliverSamples(kType, {test::sample(2), test::sample(1)});
    EXPECT_THAT(fetched(*provider, kType), ElementsAre(2, 1));
    EXPECT_THAT(fetched(*provider, kType), IsEmpty());
    EXPECT_THAT(heard, ElementsAre(ElementsAre(2, 1), IsEmpty()));
    host::setHandOverListener([](auto, const auto&) { throw std::bad_alloc(); });
    host::deliverSamples(kType, {test::sample(3)});
    EXPECT_THROW(fetched(*provider, kType), std::bad_alloc);
    host::reset();
    EXPECT_THAT(fetched(*provider, kType), IsEmpty());
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(Host, ProvidersCanBeRefused) {
    host::setProviderCreates(false);
    EXPECT_EQ(SensorProvider::createInstance("user"), nullptr);
    host::setProviderCreates(true);
    const auto provider = SensorProvider::createInstance("user");
    host::setProviderEnables(kType, false);
    EXPECT_FALSE(provider->enableSensor(kType, 1));
    EXPECT_FALSE(provider->disableSensor(kType));
    EXPECT_TRUE(provider->enableSensor(eSensorType{6}, 1));
    host::reset();
    EXPECT_TRUE(provider->enableSensor(kType, 1));
    EXPECT_TRUE(provider->disableSensor(kType));
    EXPECT_FALSE(provider->disableSensor(kType));
}

TEST_F(Host, DriversAnswerOnlyWhatTheirSensorKnows) {
    host::Sensor sensor = test::calibratedSensor();
    sensor.deviceId = 4;
    host::setSensor(1, sensor);
    NSCam::IHalSensorList* const list = NSCam::IHalSensorList::get();
    EXPECT_EQ(list->querySensorDeviceId(1), 4U);
    EXPECT_EQ(list->createSensor("user", 2), nullptr);
    NSCam::IHalSensor* const handle = list->createSensor("user", 1);
    std::uint32_t time = 7;
    std::uint32_t mode = test::kMode;
    const auto ask = [&](std::uint32_t device) {
        handle->sendCommand(device, 0x400F, reinterpret_cast<unsigned long>(&time), 0,
                            reinterpret_cast<unsigned long>(&mode));
    };
    ask(5);  // another device
    EXPECT_EQ(time, 7U);
    ask(4);
    EXPECT_EQ(time, test::kReadoutNs);
    time = 7;
    mode = test::kMode + 1;
    ask(4);
    EXPECT_EQ(time, 7U);
    handle->release("nobody");
    EXPECT_EQ(host::sensorObjectCounts().created, 1U);
    EXPECT_EQ(host::sensorObjectCounts().released, 1U);
    EXPECT_FALSE(host::sensorObjectCounts().usersMatch);
}

TEST_F(Host, OtpBytesOutliveWhoReplacesThem) {
    host::Sensor sensor;
    sensor.otp = {1, 2, 3};
    host::setSensor(0, sensor);
    const OTPData first = otpOf(0);
    ASSERT_NE(first.isStored, 0);
    sensor.otp = {9};
    host::setSensor(0, sensor);
    EXPECT_EQ(otpOf(0).bytes[0], 9);
    EXPECT_THAT(std::vector(first.bytes, first.bytes + 3), ElementsAre(1, 2, 3));
    host::setSensor(0, {});
    EXPECT_EQ(otpOf(0).isStored, 0);
    host::setSensor(0, sensor);
    host::reset();
    EXPECT_EQ(otpOf(0).isStored, 0);
}

TEST_F(Host, MetadataIsTypedAndCopiedByValue) {
    IMetadata metadata;
    host::setMetadataEntry(metadata, 1, std::vector<float>{1.5F, 2.5F});
    IMetadata copy = metadata;
    const auto look = [](const IMetadata::BurstEntry& entry) {
        float value = 0;
        double other = 0;
        std::vector<float> values;
        EXPECT_EQ(entry.readEntry(1, value, 1), 0);
        EXPECT_EQ(value, 2.5F);
        EXPECT_NE(entry.readEntry(1, value, 2), 0);
        EXPECT_NE(entry.readEntry(1, other, 0), 0);
        EXPECT_NE(entry.readEntries(2, values), 0);
        return 11;
    };
    EXPECT_EQ(metadata.burstRead(look), 11);
    metadata.burstWrite([](IMetadata::BurstEntry& entry) {
        const std::int32_t value = 3;
        EXPECT_EQ(entry.writeEntries(1, &value, 1, ~0U), 0);
    });
    EXPECT_THAT(test::entry<float>(metadata, 1), IsEmpty());
    EXPECT_THAT(test::entry<std::int32_t>(metadata, 1), ElementsAre(3));
    EXPECT_EQ(copy.burstRead(look), 11);
    copy = metadata;
    EXPECT_THAT(test::entry<std::int32_t>(copy, 1), ElementsAre(3));
}

TEST_F(Host, ARefusedWriteKeepsTheEntry) {
    IMetadata metadata;
    host::setMetadataEntry(metadata, 1, std::vector<double>{5});
    host::setFailures({.access = {{1, {.write = 7}}}});
    const double value = 6;
    const auto write = [&value](IMetadata::BurstEntry& entry) {
        EXPECT_EQ(entry.writeEntries(1, &value, 1, ~0U), 7);
        EXPECT_EQ(entry.writeEntries(2, &value, 1, ~0U), 0);
    };
    metadata.burstWrite(write);
    EXPECT_THAT(test::entry<double>(metadata, 1), ElementsAre(5));
    EXPECT_THAT(test::entry<double>(metadata, 2), ElementsAre(6));
}

TEST_F(Host, ABlockIsWrittenAloneAndNumbersAsManyAsThereAre) {
    IMetadata metadata;
    host::setMetadataEntry(metadata, 2, std::vector<double>{5});
    metadata.burstWrite([](IMetadata::BurstEntry& entry) {
        const IMetadata::Memory blocks[2] = {};
        const IMetadata::Memory* const noBlock = nullptr;
        const double* const noNumber = nullptr;
        EXPECT_EQ(entry.writeEntries(1, blocks, 1, ~0U), 0);
        EXPECT_NE(entry.writeEntries(3, blocks, 2, ~0U), 0);
        EXPECT_NE(entry.writeEntries(3, noBlock, 1, ~0U), 0);
        EXPECT_NE(entry.writeEntries(3, noNumber, 1, ~0U), 0);
        EXPECT_EQ(entry.writeEntries(2, noNumber, 0, ~0U), 0);
    });
    metadata.burstRead([](const IMetadata::BurstEntry& entry) {
        IMetadata::Memory block;
        EXPECT_EQ(entry.readEntry(1, block, 0), 0);
        EXPECT_NE(entry.readEntry(1, block, 1), 0);
        return 0;
    });
    EXPECT_EQ(host::metadataEntries(metadata).size(), 2U);
    EXPECT_THAT(test::entry<double>(metadata, 2), IsEmpty());
}

TEST_F(Host, LogsReachTheSinkWithTheirLimits) {
    std::vector<host::LogEntry> entries;
    host::setLogSink([&entries](const host::LogEntry& entry) { entries.push_back(entry); });
    __android_log_print(3, "Tag", "%s%d", "a", 1);
    ULogger::sULogger->write(0x821000, "Tag", 5, "abc", 1);
    ULogger::sULogger->write(0x821000, "Tag", 5, "abc", 1000);
    ULogger::sULogger->onAssert(1);
    ULogger::sULogger->write(0x821000, "Tag", 5, "abc", -1);
    ULogger::sULogger->write(0x821000, "Tag", 5, nullptr, 1);
    ASSERT_EQ(entries.size(), 6U);
    EXPECT_EQ(entries[4].text, "");
    EXPECT_EQ(entries[5].text, "");
    EXPECT_EQ(entries[0].text, "a1");
    EXPECT_EQ(entries[0].length, 0);
    EXPECT_EQ(entries[0].module, 0U);
    EXPECT_EQ(entries[1].text, "a");
    EXPECT_EQ(entries[2].text, "abc");
    EXPECT_EQ(entries[3].priority, 1);
    EXPECT_EQ(entries[3].module, 0U);
    EXPECT_EQ(entries[3].length, 0);
    EXPECT_EQ(__android_log_print(3, "Tag", "%ls", L"\u4e00"), -1);  // has no form in the locale of a program's start
    EXPECT_EQ(__android_log_print(3, "Tag", "%s", ""), 0);
    EXPECT_EQ(entries.size(), 7U);
    host::setLogSink(nullptr);
    EXPECT_EQ(__android_log_print(3, "Tag", "x"), 0);
    host::setLogSink([](const host::LogEntry&) { throw std::runtime_error("sink"); });
    EXPECT_LT(__android_log_print(3, "Tag", "x"), 0);
    EXPECT_THROW(ULogger::sULogger->write(0, "Tag", 1, "x", 1), std::runtime_error);
}

TEST_F(Host, PartsCanBeMissing) {
    host::setCameraMode("mode");
    EXPECT_EQ(CustomerData::getInstance()->customMetadata()->getCameraModeName(), "mode");
    host::setCustomerDataPresent(true, false);
    EXPECT_EQ(CustomerData::getInstance()->customMetadata(), nullptr);
    host::setCustomerDataPresent(false, false);
    EXPECT_EQ(CustomerData::getInstance(), nullptr);
    host::setSensorListPresent(false);
    EXPECT_EQ(NSCam::IHalSensorList::get(), nullptr);
    host::setOtpProviderPresent(false);
    EXPECT_EQ(TarvoOTPData::getInstance(), nullptr);
    host::setProperty("a", 3);
    EXPECT_EQ(NSCam::Utils::Properties::property_get_int32("a", 1), 3);
    host::reset();
    EXPECT_EQ(NSCam::Utils::Properties::property_get_int32("a", 1), 1);
    EXPECT_NE(TarvoOTPData::getInstance(), nullptr);
    EXPECT_NE(CustomerData::getInstance(), nullptr);
}

TEST_F(Host, ResetUndoesEverything) {
    NSCam::IHalSensorList* const list = NSCam::IHalSensorList::get();
    const auto provider = SensorProvider::createInstance("user");
    int heard = 0;
    host::setSensor(1, test::calibratedSensor());
    NSCam::IHalSensor* const handle = list->createSensor("user", 1);
    host::setSensorListPresent(false);
    host::setOtpBytesNull(true);
    host::setOtpStoredFlag(9);
    host::setProviderCreates(false);
    host::setProviderEnables(kType, false);
    host::deliverSamples(kType, {test::sample(1)});
    host::setHandOverListener([&](auto&&...) { ++heard; });
    host::setLogSink([&](const host::LogEntry&) { ++heard; });
    host::setLogSwitches(1, 2, 3);
    ULogger::sULogger = nullptr;
    host::setFailures({.throwing = {host::Operation::kOtpInstance}});
    host::setJournal(true);
    host::setHook([&](host::Operation) { ++heard; });

    host::reset();
    EXPECT_EQ(list->createSensor("user", 1), nullptr);
    handle->release("nobody");  // of the time before: counts nowhere
    EXPECT_EQ(host::sensorObjectCounts().created, 0U);
    EXPECT_EQ(host::sensorObjectCounts().released, 0U);
    EXPECT_TRUE(host::sensorObjectCounts().usersMatch);
    EXPECT_EQ(NSCam::IHalSensorList::get(), list);
    host::setSensor(1, test::calibratedSensor());
    EXPECT_EQ(otpOf(1).isStored, 1);
    EXPECT_NE(otpOf(1).bytes, nullptr);
    EXPECT_NE(SensorProvider::createInstance("user"), nullptr);
    EXPECT_TRUE(provider->enableSensor(kType, 1));
    EXPECT_THAT(fetched(*provider, kType), IsEmpty());
    EXPECT_EQ(ULogger::sMode, 0);
    EXPECT_EQ(ULogger::sDetailsLevel, 0U);
    EXPECT_EQ(ULogger::sNormalDetailsMask, 0U);
    ASSERT_NE(ULogger::sULogger, nullptr);
    ULogger::sULogger->onAssert(1);
    EXPECT_EQ(heard, 0);
    EXPECT_THAT(host::takeJournal(), IsEmpty());
}

// A hook that throws leaves the operation undone and every lock free, for other threads too.
TEST_F(Host, HooksStandBeforeTheWork) {
    host::deliverSamples(kType, {test::sample(1)});
    const auto provider = SensorProvider::createInstance("user");
    host::setHook([](host::Operation) { throw std::bad_alloc(); });
    EXPECT_THROW(fetched(*provider, kType), std::bad_alloc);
    EXPECT_THROW(TarvoOTPData::getInstance(), std::bad_alloc);
    host::setHook(nullptr);
    std::async(std::launch::async, [&] { EXPECT_THAT(fetched(*provider, kType), ElementsAre(1)); }).get();
}

}  // namespace
