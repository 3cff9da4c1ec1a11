#include "tools/import/MonitorAssembler.h"

#include <string>
#include <utility>

namespace replay::import {

void MonitorAssembler::take(const Registered& registered, std::size_t line) {
    letGo();
    RegisterCall call;
    call.sensor = registered.sensor;
    call.type = registered.type;
    call.before = registered.before;
    call.hadProvider = false;
    mOpen = Open{mTimeline.add(line, call, true)};
}

void MonitorAssembler::take(const DeliveryStarted&, std::size_t line) {
    if (mOpen) {
        mOpen->deliveryStarted = true;
    } else {
        mUnregistered = line;
    }
}

void MonitorAssembler::take(const Started& started, std::size_t line) {
    if (mOpen && call().sensor != started.sensor) letGo();
    if (!mOpen) {
        mUnregistered.reset();  // told of here, by the sensor's name
        mTimeline.doubt(line, "sensor " + std::to_string(started.sensor) +
                                  ": its monitor started; its registration is not in the capture");
        mTimeline.add(line, RegisterCall{started.sensor, {}, true, true, false});
        return;
    }
    if (!call().before && !mOpen->deliveryStarted) mTimeline.doubt(line, "a message of a monitor's start is missing");
    close();
}

void MonitorAssembler::take(const DeliveryEnded&, std::size_t) {
    // Where a start fails, this tells that there was a provider.
    if (mOpen) call().hadProvider = true;
}

void MonitorAssembler::take(const Stopped& stopped, std::size_t line) {
    // A start that fails stops what it registered, before it says so.
    if (mOpen && call().sensor == stopped.sensor && !mOpen->deliveryStarted) {
        mOpen->stopped = true;
        return;
    }
    letGo();
    mTimeline.add(line, UnregisterCall{stopped.sensor, stopped.left});
}

void MonitorAssembler::take(const StartFailed&, std::size_t line) {
    if (!mOpen) return mTimeline.doubt(line, "a monitor failed to start; its registration is not in the capture");
    call().started = false;
    close();
}

void MonitorAssembler::close() {
    Timeline::close(mOpen->place);
    mOpen.reset();
}

void MonitorAssembler::letGo() {
    if (const auto line = std::exchange(mUnregistered, std::nullopt)) {
        mTimeline.doubt(*line, "a monitor started; its registration is not in the capture");
    }
    if (!mOpen) return;
    RegisterCall& registration = call();
    registration.started = !mOpen->stopped;
    mTimeline.doubt(mOpen->place->line, "sensor " + std::to_string(registration.sensor) +
                                            ": whether its monitor started is not in the capture; assumed: " +
                                            (mOpen->stopped ? "no" : "yes"));
    close();
}

OtpRead& OtpAssembler::readOf(std::int32_t sensor, std::size_t line, bool first) {
    if (mOpen && (first || std::get<OtpRead>((*mOpen)->data).sensor != sensor)) letGo();
    if (!mOpen) {
        OtpRead read;
        read.sensor = sensor;
        mOpen = mTimeline.add(line, read, true);
    }
    return std::get<OtpRead>((*mOpen)->data);
}

void OtpAssembler::take(const OtpCalibration& calibration, std::size_t line) {
    readOf(calibration.sensor, line).calibration = calibration;
    letGo();
}

void OtpAssembler::take(const OtpImplausible& block, std::size_t line) {
    OtpRead& read = readOf(block.sensor, line);
    (block.golden ? read.goldenOutside : read.calibrationOutside) = true;
    if (!block.golden) letGo();
}

void OtpAssembler::take(const OtpAbsent&, std::size_t line) {
    if (!mOpen) return mTimeline.doubt(line, "an OTP memory without bytes; which sensor's is not in the capture");
    std::get<OtpRead>((*mOpen)->data).absent = true;
    letGo();
}

void OtpAssembler::letGo() {
    if (!mOpen) return;
    Timeline::close(*mOpen);
    mOpen.reset();
}

}  // namespace replay::import
