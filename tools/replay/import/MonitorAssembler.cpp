#include "tools/replay/import/MonitorAssembler.h"

#include <string>

namespace replay::import {

void MonitorAssembler::take(const Registered& registered, std::size_t line) {
    close();
    mOpen.emplace();
    mOpen->registered = registered;
    mOpen->line = line;
}

void MonitorAssembler::take(const DeliveryStarted&, std::size_t) {
    if (mOpen) mOpen->deliveryStarted = true;
}

void MonitorAssembler::take(const Started& started, std::size_t line) {
    if (mOpen && mOpen->registered.sensor != started.sensor) close();
    RegisterCall call{started.sensor, {}, true, true};
    if (mOpen) {
        call.type = mOpen->registered.type;
        line = mOpen->line;
        mOpen.reset();
    }
    mCapture.add(line, call);
}

void MonitorAssembler::take(const DeliveryEnded&, std::size_t) {
    if (mOpen) mOpen->deliveryEnded = true;
}

void MonitorAssembler::take(const Stopped& stopped, std::size_t line) {
    // A start that fails stops what it registered, before it says so.
    if (mOpen && mOpen->registered.sensor == stopped.sensor && !mOpen->deliveryStarted) {
        mOpen->stopped = true;
        return;
    }
    close();
    mCapture.add(line, UnregisterCall{stopped.sensor});
}

void MonitorAssembler::take(const StartFailed&, std::size_t line) {
    if (!mOpen) {
        mCapture.addHole(line, "a monitor failed to start; its registration is not in the capture");
        return;
    }
    const RegisterCall call{mOpen->registered.sensor, mOpen->registered.type, false, mOpen->deliveryEnded};
    mCapture.add(mOpen->line, call);
    mOpen.reset();
}

void MonitorAssembler::close() {
    if (!mOpen) return;
    const auto [registered, line, started, ended, stopped] = *mOpen;
    mOpen.reset();
    const RegisterCall call{registered.sensor, registered.type, !stopped, ended};
    mCapture.add(line, call);
    mCapture.addHole(line, "sensor " + std::to_string(registered.sensor) + ": whether its monitor started is " +
                               "not in the capture; assumed: " + (stopped ? "no" : "yes"));
}

void MonitorAssembler::finish() {
    close();
}

}  // namespace replay::import
