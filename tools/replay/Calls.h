// The calls that a session can make, by name.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "tools/replay/Fields.h"
#include "tools/replay/ResultLine.h"

namespace NSCam {
class IMetadata;
}

namespace replay {

class Session;

// Makes the call and adds its outputs. Runs at most once.
using Call = std::function<void(Session&, ResultLine&)>;

// Reads a call's arguments, all of them before anything is called. Throws LineError; the caller checks that no key is
// left over.
using CallReader = Call (*)(Fields& arguments, const Session& session);

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
Call readCall(Fields& line, const Session& session);

// The metadata object that the argument `metadata` names. Throws LineError for a name that no line made.
NSCam::IMetadata* readMetadataName(Fields& arguments, const Session& session);
// The same, but null gives a null pointer.
NSCam::IMetadata* readMetadataNameOrNull(Fields& arguments, const Session& session);

}  // namespace replay
