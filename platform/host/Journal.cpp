#include "platform/host/Journal.h"

#include <iterator>

#include "platform/host/Guarded.h"
#include "platform/host/Recorded.h"

namespace host {
namespace {

constexpr std::string_view kNames[] = {
    // in the order of the operations
    "Properties::property_get_int32",
    "ULogger::write",
    "ULogger::onAssert",
    "IHalSensorList::get",
    "IHalSensorList::querySensorDeviceId",
    "IHalSensorList::createSensor",
    "IHalSensor::sendCommand",
    "IHalSensor::sendCommand.end",
    "IHalSensor::release",
    "SensorProvider::createInstance",
    "SensorProvider::enableSensor",
    "SensorProvider::disableSensor",
    "SensorProvider::getAllSensorData",
    "IMetadata::burstRead",
    "IMetadata::burstWrite",
    "Storage::readEntry",
    "Storage::readEntries",
    "Storage::writeEntries",
    "CustomerData::getInstance",
    "CustomerData::customMetadata",
    "CustomMetadata::getCameraModeName",
    "TarvoOTPData::getInstance",
    "TarvoOTPData::getOTPData",
};
static_assert(std::size(kNames) == static_cast<std::size_t>(Operation::kCount));

internal::Guarded<std::vector<JournalEntry>>& journal() {
    return internal::processWide<internal::Guarded<std::vector<JournalEntry>>>();
}

}  // namespace

constinit std::atomic<bool> internal::gJournalOn{false};

void internal::Recorded::file() noexcept try {
    if (!mAnswered) with("threw", true);
    journal().lock()->push_back(std::move(mEntry));
} catch (...) {
    return;
}

void setJournal(bool on) {
    // Relaxed: see Recorded.
    internal::gJournalOn.store(on, std::memory_order_relaxed);
    journal().lock()->clear();
}

std::vector<JournalEntry> takeJournal() {
    return std::exchange(*journal().lock(), {});
}

std::string_view nameOf(Operation operation) {
    return kNames[static_cast<std::size_t>(operation)];  // the operations count from 0
}

}  // namespace host
