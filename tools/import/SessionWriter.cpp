#include "tools/import/SessionWriter.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/session/Limits.h"

namespace replay::import {
namespace {

using std::to_string;

constexpr std::size_t kFlushed = 1000000;    // bytes
constexpr std::size_t kMostBody = 32000000;  // bytes that wait for what the head must say

}  // namespace

SessionWriter::SessionWriter(std::string name, const CaptureFacts& facts, Timeline& timeline, Report& report, Sink sink)
    : mName(std::move(name)), mFacts(facts), mTimeline(timeline), mReport(report), mSink(std::move(sink)) {}

void SessionWriter::write(bool all) {
    while (mTimeline.isReady(all)) {
        Call call = mTimeline.take();
        mLine = call.line;
        std::visit([this](auto& data) { write(data); }, call.data);
    }
    if (all) finish();
    if (all || mBody.size() > kFlushed) flush(all);
}

void SessionWriter::hole(const std::string& text) {
    line("# hole: " + inComment(text));
    mReport.notice(mLine, text);
}

void SessionWriter::flush(bool all) {
    // Properties must be set before the first call.
    if (!mHeadWritten && !mMode && !all && mBody.size() < kMostBody) return;
    if (!mHeadWritten) {
        mSettings.everySample = mFacts.sawSamples;
        mSettings.calculationMode = mMode.value_or(0);
        mSink(sessionHead(mName, mSettings));
        mHeadWritten = true;
    }
    mSink(mBody);
    mBody.clear();
}

void SessionWriter::finish() {
    for (const auto& [pid, count] : mFacts.otherProcesses) {
        mReport.general(countOf(count, "message") + " of process " + to_string(pid) + " left out; --pid " +
                        to_string(pid) + " imports them");
    }
    if (!mFacts.sawSamples) {
        mReport.general(
            "the samples handed over are not in the log: set vendor.tarvo.3a.lscutil.log to 4 and restart the camera "
            "service (docs/workbench.md)");
    }
    if (mFacts.bareLines != 0) {
        mReport.general(countOf(mFacts.bareLines, "message") +
                        " without a tag left out: the forms raw and thread have none; record with -v threadtime");
    }
    if (!mFacts.sawThreads && mSensors.size() > 1) {
        mReport.general("the form of the log names no threads, and there are " + to_string(mSensors.size()) +
                        " sensors: messages were told apart by what they say; record with -v threadtime");
    }
    if (mFacts.refused != 0) {
        mReport.general(countOf(mFacts.refused, "call") +
                        " for a sensor that the library refuses left out, the first for sensor " +
                        to_string(mFacts.refusedSensor) + "; they change nothing");
    }
    if (mReport.nobodys != 0) {
        mReport.general(countOf(mReport.nobodys, "hand-over") +
                        " of a sensor that no message names left out; record from before the camera opens");
    }
    if (mReport.frames != 0 && !mMode && mFacts.sawListings) {
        mReport.general("no position tells the calculation mode; 0 is assumed");
    }
}

// ---- Sensors

SessionWriter::Sensor& SessionWriter::sensorAt(std::int32_t id) {
    const auto [found, isNew] = mSensors.try_emplace(id);
    if (isNew) {
        found->second.type = kAssumedType;
        writeSensor(id);
    }
    return found->second;
}

void SessionWriter::writeSensor(std::int32_t id) {
    const Sensor& sensor = mSensors.at(id);
    OtpRead unknown;
    unknown.sensor = id;
    line(sensorLine(id, sensor.otp.value_or(unknown), sensor.times));
}

void SessionWriter::needMonitor(std::int32_t id) {
    Sensor& sensor = sensorAt(id);
    if (sensor.registered) return;
    hole("sensor " + to_string(id) +
         ": the start of its monitor is not in the capture; started here, its buffer empty");
    write(RegisterCall{id, {}, true, true, false});
    sensor.evidence.start(false);
}

void SessionWriter::write(const RegisterCall& call) {
    Sensor& sensor = sensorAt(call.sensor);
    if (call.before) needMonitor(call.sensor);
    if (sensor.registered && !call.before) {
        hole("sensor " + to_string(call.sensor) +
             ": registered anew; the end of its monitor is not in the capture, or the camera service began anew");
        write(UnregisterCall{call.sensor, {}});
    }
    const std::int32_t type = call.type.value_or(sensor.type);
    const std::string answer = call.hadProvider
                                   ? "{\"platform\":\"provider\",\"type\":" + to_string(type) + ",\"enable\":"
                                   : std::string("{\"platform\":\"provider\",\"create\":");
    if (!call.started) line(answer + "false}");
    // A type is an unsigned argument.
    line(callLine("RegisterAndStartSensorMonitor", call.sensor,
                  {{"type", to_string(static_cast<std::uint32_t>(type))}}));
    if (!call.started) line(answer + "true}");
    if (!call.started || call.before) return;
    sensor.type = type;
    sensor.registered = true;
    sensor.shutter = 0;
    sensor.buffer.clear();
    sensor.evidence.start(true);
    mAttribution.registered(call.sensor, type);
}

void SessionWriter::write(const UnregisterCall& call) {
    Sensor& sensor = sensorAt(call.sensor);
    line(callLine("UnRegisterSensorMonitor", call.sensor, {}));
    sensor.registered = false;
    sensor.buffer.clear();
    mAttribution.unregistered(call.sensor);
    if (call.left && *call.left != mAttribution.monitors()) {
        hole(countOf(*call.left, "monitor") + " left, where the capture tells of " +
             to_string(mAttribution.monitors()) + ": a start or an end of one is missing");
    }
}

void SessionWriter::write(const RollingShutter& call) {
    needMonitor(call.sensor);
    Sensor& sensor = mSensors.at(call.sensor);
    const auto [answer, isNew] = sensor.times.try_emplace(call.mode, 0);
    if (std::exchange(answer->second, call.time) != call.time) writeSensor(call.sensor);
    line(callLine("StoreRollingShutter", call.sensor, {{"mode", to_string(call.mode)}}));
    sensor.shutter = call.time;
}

void SessionWriter::needShutter(std::int32_t id, const Calculation& calculation) {
    const std::uint32_t us = calculation.shutterUs;
    if (calculation.startUs == 0 || mSensors.at(id).shutter / lsc::kNsPerUs == us) return;
    hole("sensor " + to_string(id) + ": its rolling shutter of " + to_string(us) +
         " us is not in the capture; set here from a calculation, in mode 0");
    // Printed from a number of ns in 32 bits, unless it is damaged.
    const std::uint64_t ns = std::uint64_t{us} * lsc::kNsPerUs;
    write(RollingShutter{id, static_cast<std::uint32_t>(std::min<std::uint64_t>(ns, UINT32_MAX)), 0});
}

void SessionWriter::write(const OtpRead& call) {
    const auto [found, isNew] = mSensors.try_emplace(call.sensor);
    Sensor& sensor = found->second;
    if (isNew) sensor.type = kAssumedType;
    sensor.otp = call;
    writeSensor(call.sensor);
    const bool whole =
        call.absent || ((call.golden || call.goldenOutside) && (call.calibration || call.calibrationOutside));
    if (!call.layout || !whole) hole("sensor " + to_string(call.sensor) + ": messages of its OTP memory are missing");
    // Both read the OTP memory; a forced index would keep the first from it.
    if (mSettings.forcedIndex != 0) {
        line(callLine("IsSupportFeature", call.sensor, {{"feature", "2"}}));
    } else {
        line(callLine("GetMultiTableIndex", call.sensor, {}));
    }
}

void SessionWriter::write(const OtpTableQueried& call) {
    sensorAt(call.sensor);
    if (call.length > kMaxOtpLength) return;
    line(callLine("QueryOTPInfo", call.sensor, {{"length", to_string(call.length)}}));
}

void SessionWriter::write(const IndexForced& call) {
    if (mSettings.forcedIndex == 0 && mHeadWritten) {
        return hole("a forced table index of " + to_string(call.index) + ", known too late for the session's head");
    }
    mSettings.forcedIndex = call.index;
    const std::int32_t id = mSensors.empty() ? 0 : mSensors.begin()->first;
    sensorAt(id);
    line(callLine("GetMultiTableIndex", id, {}));
}

}  // namespace replay::import
