// The calls that a session can make, by name.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "tools/session/ObjectReader.h"
#include "tools/session/ResultLine.h"

namespace NSCam {
class IMetadata;
}

namespace replay {

class PlayState;

// Makes the call and adds its outputs. Runs at most once.
using PreparedCall = std::function<void(PlayState&, ResultLine&)>;

// Reads a call's arguments, all of them before anything is called. Throws LineError; the caller checks that no key is
// left over.
using CallReader = PreparedCall (*)(ObjectReader& arguments, const PlayState& session);

struct NamedCall {
    std::string_view name;
    CallReader read;
};

// Calls about the sensor: features, OTP calibration, monitors.
std::span<const NamedCall> sensorCalls();
// Calls about samples and frames.
std::span<const NamedCall> frameCalls();
// Calls that exchange colour-sensor values.
std::span<const NamedCall> colorCalls();
// Instances and their hooks.
std::span<const NamedCall> hookCalls();

// Reads the line of a call. Throws LineError as its reader does, and for an unknown name.
PreparedCall readCall(ObjectReader& line, const PlayState& session);

// The argument `sensor`, which most calls have.
inline std::int32_t sensorOf(ObjectReader& arguments) {
    return arguments.integer<std::int32_t>("sensor");
}
// The metadata object that the argument `metadata` names. Throws LineError for a name that no line made.
NSCam::IMetadata* readMetadataName(ObjectReader& arguments, const PlayState& session);
// The same, but null gives a null pointer.
NSCam::IMetadata* readMetadataNameOrNull(ObjectReader& arguments, const PlayState& session);

}  // namespace replay
