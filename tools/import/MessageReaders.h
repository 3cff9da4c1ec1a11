// Readers of the messages of one function: what the parts of Messages.cpp share.
#pragma once

#include <string_view>

#include "tools/import/Events.h"
#include "tools/import/Scan.h"

namespace replay::import {

// Each reader sets `event` and returns true, or returns false for a message that is cut or changed.
using MessageReader = bool (*)(std::string_view message, Event& event);

// Makes the event a T when all of the message is made of `parts`, each a literal or a field of T.
template <typename T, typename... Parts>
bool as(std::string_view message, Event& event, T& made, Parts&... parts) {
    if (!scan(message, parts...)) return false;
    event = made;
    return true;
}

template <typename T>
bool asWords(std::string_view message, Event& event, std::string_view words) {
    if (message != words) return false;
    event = T{};
    return true;
}

inline bool other(std::string_view message, Event& event, std::string_view beginning) {
    if (!message.starts_with(beginning)) return false;
    event = Other{};
    return true;
}

// Of monitors and OTP memories.
bool registerMonitor(std::string_view m, Event& event);
bool startMonitor(std::string_view m, Event& event);
bool registerAndStartMonitor(std::string_view m, Event& event);
bool unregisterMonitor(std::string_view m, Event& event);
bool enableSensor(std::string_view m, Event& event);
bool disableSensor(std::string_view m, Event& event);
bool storeRollingShutter(std::string_view m, Event& event);
bool readOtp(std::string_view m, Event& event);
bool queryOtp(std::string_view m, Event& event);
bool multiTableIndex(std::string_view m, Event& event);

}  // namespace replay::import
