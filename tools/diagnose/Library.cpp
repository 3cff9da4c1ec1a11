#include "tools/diagnose/Library.h"

#include <mutex>
#include <new>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "customer/aaa/aaa/lsc/Settings.h"
#include "platform/Properties.h"
#include "platform/host/Host.h"

namespace replay {
namespace {

TarvoShadingCustomUtil* findCustomer() {
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    return TarvoShadingCustomUtil::mSingleInstance;
}

}  // namespace

TarvoShadingCustomUtil& Library::customer() {
    noteSettings();
    TarvoShadingCustomUtil* object = findCustomer();
    if (object == nullptr) {
        // The one call that creates it and neither logs nor reads.
        CustomShadingUtil::IsSupportFeature(kFeatureAlways, 0);
        object = findCustomer();
    }
    if (object == nullptr) throw std::bad_alloc();
    return *object;
}

// The object reads its properties once, when it is created: what they say until then is what it was created with.
void Library::noteSettings() {
    if (mCustomerSeen) return;
    mCustomerSeen = findCustomer() != nullptr;
    if (mCustomerSeen) return;
    if (mModeOverride) host::setProperty(lsc::setting::kOisCalculation, *mModeOverride);
    mCalculationMode = NSCam::Utils::Properties::property_get_int32(lsc::setting::kOisCalculation, 0);
}

void Library::setLogSwitches(const LogSwitches& switches) {
    mSwitches = switches;
    host::setLogSwitches(switches.mode, switches.detailsLevel, switches.detailsMask);
}

ClosedLogGates::ClosedLogGates(Library& library) : mLibrary(library), mBefore(library.logSwitches()) {
    library.setLogSwitches({});
}

ClosedLogGates::~ClosedLogGates() {
    mLibrary.setLogSwitches(mBefore);
}

}  // namespace replay
