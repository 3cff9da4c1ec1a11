// System properties of the device.
#pragma once

#include <cstdint>

namespace NSCam::Utils::Properties {

// The value of property `key` as a signed 32-bit integer, or `defaultValue` when the property is unset or not a
// number. Thread safe. May throw std::bad_alloc.
std::int32_t property_get_int32(const char* key, std::int32_t defaultValue);

}  // namespace NSCam::Utils::Properties
