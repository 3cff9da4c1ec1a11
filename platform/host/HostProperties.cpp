// System properties, kept in memory.
#include <functional>
#include <map>
#include <string>

#include "platform/Properties.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"
#include "platform/host/Recorded.h"

namespace host {
namespace {

// Compares without making a string of the key that is looked up.
using PropertyMap = std::map<std::string, std::int32_t, std::less<>>;

internal::Guarded<PropertyMap>& properties() {
    return internal::processWide<internal::Guarded<PropertyMap>>();
}

}  // namespace

void setProperty(const std::string& key, std::int32_t value) {
    properties().lock()->insert_or_assign(key, value);
}

void internal::resetProperties() {
    properties().lock()->clear();
}

}  // namespace host

std::int32_t NSCam::Utils::Properties::property_get_int32(const char* key, std::int32_t defaultValue) {
    host::internal::Recorded call(host::Operation::kPropertyGet);
    call.with("key", key).with("default", defaultValue).begin();
    if (!key) return call.answer("result", defaultValue);
    const auto properties = host::properties().lock();
    const auto found = properties->find(key);
    return call.answer("result", found == properties->end() ? defaultValue : found->second);
}
