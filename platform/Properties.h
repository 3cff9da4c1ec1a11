// System properties of the device.
#pragma once

#include <cstdint>

namespace NSCam::Utils::Properties {

// The value of property `key` as a signed 32-bit integer, or `defaultValue` when the property is unset or not a
// number. Thread safe. May throw std::bad_alloc. Called under the lock that guards the creation of the customer object,
// so it must not call the library nor wait for a thread that does.
std::int32_t property_get_int32(const char* key, std::int32_t defaultValue);

}  // namespace NSCam::Utils::Properties
