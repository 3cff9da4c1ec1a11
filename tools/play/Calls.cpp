#include "tools/play/Calls.h"

#include "tools/play/PlayState.h"
#include "tools/session/JsonText.h"

namespace replay {

PreparedCall readCall(ObjectReader& line, const PlayState& session) {
    const std::string name = line.text("call");
    for (const auto calls : {sensorCalls(), frameCalls(), colorCalls(), hookCalls()}) {
        for (const NamedCall& call : calls) {
            if (call.name == name) return call.read(line, session);
        }
    }
    failAt(line.at("call"), "unknown function " + jsonString(name));
}

NSCam::IMetadata* readMetadataName(ObjectReader& arguments, const PlayState& session) {
    const std::string name = arguments.text("metadata");
    NSCam::IMetadata* const metadata = session.findMetadata(name);
    if (metadata == nullptr) failAt(arguments.at("metadata"), "no earlier line makes the metadata " + jsonString(name));
    return metadata;
}

NSCam::IMetadata* readMetadataNameOrNull(ObjectReader& arguments, const PlayState& session) {
    return arguments.get("metadata").isNull() ? nullptr : readMetadataName(arguments, session);
}

}  // namespace replay
