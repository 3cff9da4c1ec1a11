#include "tools/replay/Session.h"

#include <mutex>
#include <new>
#include <utility>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "platform/Properties.h"

namespace replay {
namespace {

constexpr const char* kCalculationMode = "vendor.debug.ois.hall.calculation";

TarvoShadingCustomUtil* findCustomer() {
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    return TarvoShadingCustomUtil::mSingleInstance;
}

}  // namespace

void Session::putMetadata(const std::string& name, std::unique_ptr<NSCam::IMetadata> metadata) {
    mMetadata[name] = std::move(metadata);
}

NSCam::IMetadata* Session::findMetadata(const std::string& name) const {
    const auto found = mMetadata.find(name);
    return found != mMetadata.end() ? found->second.get() : nullptr;
}

CustomShadingFlow* Session::findInstance(std::int32_t index) const {
    const auto found = mInstances.find(index);
    return found != mInstances.end() ? found->second : nullptr;
}

void Session::setLogSwitches(const LogSwitches& switches) {
    mSwitches = switches;
    host::setLogSwitches(switches.mode, switches.detailsLevel, switches.detailsMask);
}

void Session::noteMonitor(std::int32_t sensor, bool there) {
    if (there) {
        mMonitors.insert(sensor);
    } else {
        mMonitors.erase(sensor);
    }
}

void Session::endMonitors() {
    const ClosedLogGates closed(mSwitches);
    for (const std::int32_t sensor : mMonitors)
        CustomShadingUtil::UnRegisterSensorMonitor(sensor);
    mMonitors.clear();
}

TarvoShadingCustomUtil& Session::customer() {
    noteSettings();
    TarvoShadingCustomUtil* object = findCustomer();
    if (object == nullptr) {
        CustomShadingUtil::IsSupportFeature(1, 0);  // the one call that creates it and neither logs nor reads
        object = findCustomer();
    }
    if (object == nullptr) throw std::bad_alloc();
    return *object;
}

// The object reads its properties once, when it is created: what they say until then is what it was created with.
void Session::noteSettings() {
    if (mCustomerSeen) return;
    mCustomerSeen = findCustomer() != nullptr;
    if (!mCustomerSeen) mCalculationMode = NSCam::Utils::Properties::property_get_int32(kCalculationMode, 0);
}

}  // namespace replay
