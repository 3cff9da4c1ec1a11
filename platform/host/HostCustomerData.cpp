// The customer's camera data: one mode name.
#include "platform/CustomerData.h"

#include <string>

#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

namespace host {
namespace {

struct CustomerState {
    std::string cameraMode;
    bool holderPresent = true;
    bool metadataPresent = true;
};

internal::Guarded<CustomerState>& customerState() {
    return internal::processWide<internal::Guarded<CustomerState>>();
}

class HostCustomMetadata final : public CustomMetadata {
public:
    std::string getCameraModeName() const override {
        internal::Recorded call(Operation::kCameraModeName);
        call.begin();
        return call.answer("result", customerState().lock()->cameraMode);
    }
};

constinit HostCustomMetadata gCustomMetadata;

class HostCustomerData final : public CustomerData {
public:
    const CustomMetadata* customMetadata() const override {
        internal::Recorded call(Operation::kCustomMetadata);
        call.begin();
        return call.answer(customerState().lock()->metadataPresent ? &gCustomMetadata : nullptr);
    }
};

constinit HostCustomerData gCustomerData;

}  // namespace

void setCameraMode(const std::string& name) {
    customerState().lock()->cameraMode = name;
}

void setCustomerDataPresent(bool holder, bool metadata) {
    const auto state = customerState().lock();
    state->holderPresent = holder;
    state->metadataPresent = metadata;
}

void internal::resetCustomerData() {
    *customerState().lock() = {};
}

}  // namespace host

CustomerData* CustomerData::getInstance() {
    host::internal::Recorded call(host::Operation::kCustomerData);
    call.begin();
    return call.answer(host::customerState().lock()->holderPresent ? &host::gCustomerData : nullptr);
}
