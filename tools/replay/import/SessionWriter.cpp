#include "tools/replay/import/SessionWriter.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

#include "tools/replay/import/SensorGuess.h"
#include "tools/replay/import/SessionText.h"

namespace replay::import {
namespace {

using Outcome = ExposureCall::Outcome;
using std::to_string;

constexpr std::uint64_t kNsPerUs = 1000;
constexpr std::size_t kMaxOtpLength = 65536;  // of a session's QueryOTPInfo line

std::span<const std::uint32_t> typesOf(bool multi) {
    static constexpr std::array<std::uint32_t, 1> kSingle{1};
    static constexpr std::array<std::uint32_t, 2> kMulti{5, 6};
    return multi ? std::span<const std::uint32_t>(kMulti) : std::span<const std::uint32_t>(kSingle);
}

bool isMulti(const FrameCall& call) {
    const auto multi = [](const ExposureCall& exposure) { return exposure.calculation.type >= 5; };
    return call.multi.value_or(std::ranges::any_of(call.exposures, multi));
}

}  // namespace

SessionWriter::SessionWriter(Capture capture, std::string name) : mCapture(std::move(capture)), mName(std::move(name)) {
    nameSensors(mCapture, mAssumptions);
}

std::string SessionWriter::write() {
    gatherSensors();
    noteFrames();
    for (const auto& [id, sensor] : mSensors)
        writeSensor(id);
    for (const Call& call : mCapture.calls) {
        mLine = call.line;
        std::visit([this](const auto& data) { write(data); }, call.data);
    }
    // The body's holes join the reader's: all are listed before anything else.
    return head() + mBody;
}

void SessionWriter::gatherSensors() {
    for (const std::int32_t id : namedSensors(mCapture))
        mSensors[id].type = typeOf(mCapture, id);
    for (const Call& call : mCapture.calls) {
        if (const auto* const frame = std::get_if<FrameCall>(&call.data)) mSensors[*frame->sensor].hasFrames = true;
        if (const auto* const update = std::get_if<UpdateCall>(&call.data)) mSensors[*update->sensor];
        const auto* const shutter = std::get_if<RollingShutter>(&call.data);
        if (shutter != nullptr) mSensors[shutter->sensor].times.try_emplace(shutter->mode, shutter->time);
    }
    if (mSensors.empty()) mSensors[0];
    if (!mCapture.calculationMode) mAssumptions.emplace_back("calculation mode 0: no position tells");
    for (auto& [id, sensor] : mSensors)
        sensor.type = typeOf(mCapture, id);
}

void SessionWriter::noteFrames() {
    for (const Call& call : mCapture.calls) {
        const auto* const update = std::get_if<UpdateCall>(&call.data);
        if (update != nullptr && update->frame && update->timestamp != 0) mFrames[update->timestamp] = *update->frame;
    }
}

void SessionWriter::hole(std::string text) {
    line("# hole: " + text);
    mCapture.addHole(mLine, std::move(text));
}

void SessionWriter::writeSensor(std::int32_t id) {
    const Sensor& sensor = mSensors[id];
    const auto facts = mCapture.otp.find(id);
    line(sensorLine(id, facts != mCapture.otp.end() ? facts->second : OtpFacts{}, sensor.hasFrames, sensor.times));
}

// ---- Monitors

void SessionWriter::needMonitor(std::int32_t id) {
    if (mSensors[id].registered) return;
    hole("sensor " + to_string(id) +
         ": the start of its monitor is not in the capture; started here, its buffer empty");
    write(RegisterCall{id, {}, true, true});
}

void SessionWriter::write(const RegisterCall& call) {
    Sensor& sensor = mSensors[call.sensor];
    const std::int32_t type = call.type.value_or(sensor.type);
    const std::string answer = call.hadProvider
                                   ? "{\"platform\":\"provider\",\"type\":" + to_string(type) + ",\"enable\":"
                                   : std::string("{\"platform\":\"provider\",\"create\":");
    if (!call.started) line(answer + "false}");
    // A type is an unsigned argument.
    line(callLine("RegisterAndStartSensorMonitor", call.sensor,
                  {{"type", to_string(static_cast<std::uint32_t>(type))}}));
    if (!call.started) line(answer + "true}");
    if (!sensor.registered) sensor.shutter = 0;
    if (call.started) sensor.type = type;
    sensor.registered = call.started;
}

void SessionWriter::write(const UnregisterCall& call) {
    line(callLine("UnRegisterSensorMonitor", call.sensor, {}));
    mSensors[call.sensor].registered = false;
}

void SessionWriter::write(const RollingShutter& call) {
    needMonitor(call.sensor);
    Sensor& sensor = mSensors[call.sensor];
    if (std::exchange(sensor.times[call.mode], call.time) != call.time) writeSensor(call.sensor);
    line(callLine("StoreRollingShutter", call.sensor, {{"mode", to_string(call.mode)}}));
    sensor.shutter = call.time;
}

void SessionWriter::needShutter(std::int32_t id, const ExposureCall& exposure) {
    const Sensor& sensor = mSensors[id];
    const std::uint32_t us = exposure.calculation.shutterUs;
    if (exposure.calculation.startUs == 0 || sensor.shutter / kNsPerUs == us) return;
    hole("sensor " + to_string(id) + ": its rolling shutter of " + to_string(us) +
         " us is not in the capture; set here from a calculation, in mode 0");
    write(RollingShutter{id, us * std::uint32_t{kNsPerUs}, 0});
}

void SessionWriter::write(const UpdateCall& call) {
    const std::int32_t id = *call.sensor;
    const std::string label = "frame " + to_string(*call.frame) + ": ";
    if (call.samplesLost) return hole(label + call.hole + "; left out");
    needMonitor(id);
    if (!call.hole.empty()) hole(label + call.hole);
    if (call.samples != 0) {
        line("{\"samples\":" + to_string(mSensors[id].type) + ",\"data\":[" + call.data + "]}");
    }
    line(callLine("UpdateSensorData", id,
                  {{"frame", to_string(*call.frame)}, {"timestamp", to_string(call.timestamp)}}));
}

// ---- OTP

void SessionWriter::write(const OtpReadCall& call) {
    // Both read the OTP memory; a forced index would keep the first from it.
    if (mCapture.forcedIndex) {
        line(callLine("IsSupportFeature", call.sensor, {{"feature", "2"}}));
    } else {
        line(callLine("GetMultiTableIndex", call.sensor, {}));
    }
}

void SessionWriter::write(const OtpTableQueried& call) {
    if (call.length > kMaxOtpLength) return;
    line(callLine("QueryOTPInfo", call.sensor, {{"length", to_string(call.length)}}));
}

void SessionWriter::write(const IndexForced&) {
    line(callLine("GetMultiTableIndex", mSensors.begin()->first, {}));
}

// ---- Frames

std::string SessionWriter::labelOf(const FrameCall& call) const {
    std::uint64_t start = 0;
    if (call.timing) {
        start = call.timing->sof;
    } else if (!call.exposures.empty()) {
        start = call.exposures.front().timestamp.value_or(0);
    }
    const auto frame = mFrames.find(start);
    if (frame != mFrames.end()) return "frame " + to_string(frame->second);
    return start != 0 ? "the frame that starts at " + to_string(start) + " ns" : std::string("a frame");
}

void SessionWriter::expect(const FrameCall& call, const ExposureCall& exposure) {
    if (exposure.outcome == Outcome::kUnknown) {
        return hole(labelOf(call) + ": what became of its exposure of type " + to_string(exposure.calculation.type) +
                    " is not in the capture");
    }
    std::string text = "#expect {";
    const std::string label = labelOf(call);
    if (label.starts_with("frame ")) text += "\"frame\":" + label.substr(label.find(' ') + 1) + ",";
    text += "\"sensor\":" + to_string(*call.sensor) + ",\"type\":" + to_string(exposure.calculation.type);
    const bool there = exposure.outcome == Outcome::kPosition;
    text += there ? ",\"x\":\"" + exposure.x + "\",\"y\":\"" + exposure.y + "\"}" : ",\"x\":null,\"y\":null}";
    line(text);
}

void SessionWriter::expectAll(const FrameCall& call, bool notTried) {
    for (const std::uint32_t type : typesOf(isMulti(call))) {
        const auto sameType = [type](const ExposureCall& exposure) { return exposure.calculation.type == type; };
        const auto found = std::ranges::find_if(call.exposures, sameType);
        ExposureCall exposure;
        exposure.calculation.type = type;
        if (notTried) exposure.outcome = Outcome::kNone;
        expect(call, found != call.exposures.end() ? *found : exposure);
    }
}

void SessionWriter::write(const FrameCall& call) {
    const std::int32_t id = *call.sensor;
    // Calculations are only reported with a monitor that runs.
    if (!call.exposures.empty()) {
        needMonitor(id);
        needShutter(id, call.exposures.front());
    }
    Sensor& sensor = mSensors[id];
    const std::string name = "frame-" + to_string(id);
    if (call.written) {
        if (!sensor.served) line(writtenMetadata(name, isMulti(call)));
        line(callLine("fillLscOISCompInfo", id, {{"metadata", "\"" + name + "\""}}));
    } else if (call.timing) {
        writeTimed(call);
    } else {
        writeUntimed(call);
    }
}

void SessionWriter::writeTimed(const FrameCall& call) {
    const Timing& timing = *call.timing;
    // The call goes on to the calculation only with both entries there, whatever they hold.
    const bool tried = !call.exposures.empty();
    const bool hasStart = tried || timing.sof != 0;
    const bool hasExposure = tried || timing.exposure != 0 || timing.exposureSe != 0;
    if (!call.multi) hole(labelOf(call) + ": its exposure mode is not in the capture");
    Sensor& sensor = mSensors[*call.sensor];
    const std::string name = "frame-" + to_string(*call.sensor);
    line(frameMetadata(name, isMulti(call), timing, hasStart, hasExposure));
    line(callLine("fillLscOISCompInfo", *call.sensor, {{"metadata", "\"" + name + "\""}}));
    expectAll(call, !tried && (!hasStart || !hasExposure || !sensor.registered));
    sensor.served = tried && std::ranges::all_of(call.exposures, [](const ExposureCall& exposure) {
                        return exposure.outcome == Outcome::kPosition;
                    });
}

void SessionWriter::writeUntimed(const FrameCall& call) {
    if (call.exposures.empty()) return hole(labelOf(call) + ": its timing is not in the capture; left out");
    if (call.multi) hole(labelOf(call) + ": its timing is not in the capture; its calculations are played alone");
    for (const ExposureCall& exposure : call.exposures) {
        line(calculationLine(*call.sensor, exposure));
        expect(call, exposure);
    }
    mSensors[*call.sensor].served = false;
}

// ---- Head

std::string SessionWriter::head() {
    std::ranges::stable_sort(mCapture.holes, {}, &Note::line);
    auto next = mCapture.calls.begin();
    for (const Note& note : mCapture.holes) {
        std::string text = "line " + to_string(note.line) + ": " + note.text;
        if (!note.text.starts_with("frame ")) {
            const auto isLater = [&](const Call& call) {
                return call.line >= note.line && std::holds_alternative<UpdateCall>(call.data);
            };
            next = std::find_if(next, mCapture.calls.end(), isLater);
            if (next != mCapture.calls.end()) {
                text += " (about frame " + to_string(*std::get<UpdateCall>(next->data).frame) + ")";
            }
        }
        mHoleTexts.push_back(std::move(text));
    }
    return sessionHead(mCapture, mName, mAssumptions, mHoleTexts);
}

}  // namespace replay::import
