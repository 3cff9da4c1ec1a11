// Reads the library's messages. Pure; any bytes may stand in a text. A message that was cut, or whose values its fields
// do not hold, is Unreadable.
#pragma once

#include <string_view>

#include "tools/import/Events.h"

namespace replay::import {

// Whether messages with this tag are the library's.
bool isLibraryTag(std::string_view tag);

// The event of a message of the library.
Event parseMessage(std::string_view text);

}  // namespace replay::import
