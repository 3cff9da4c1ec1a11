// Puts the messages of one thread about monitors together to calls that register and unregister them.
#pragma once

#include <cstddef>
#include <optional>

#include "tools/replay/import/Capture.h"

namespace replay::import {

// A registration whose outcome has not come yet.
struct OpenRegistration {
    Registered registered;
    std::size_t line = 0;
    bool deliveryStarted = false;
    bool deliveryEnded = false;
    bool stopped = false;
};

class MonitorAssembler {
public:
    // `capture` must outlive the assembler.
    explicit MonitorAssembler(Capture& capture) : mCapture(capture) {}

    void take(const Registered& registered, std::size_t line);
    void take(const DeliveryStarted& started, std::size_t line);
    void take(const Started& started, std::size_t line);
    void take(const DeliveryEnded& ended, std::size_t line);
    void take(const Stopped& stopped, std::size_t line);
    void take(const StartFailed& failed, std::size_t line);
    // No more lines come.
    void finish();

private:
    void close();

    Capture& mCapture;
    std::optional<OpenRegistration> mOpen;
};

}  // namespace replay::import
