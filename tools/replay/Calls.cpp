#include "tools/replay/Calls.h"

#include "tools/replay/Session.h"

namespace replay {

Call readCall(Fields& line, const Session& session) {
    const std::string& name = line.text("call");
    for (const auto calls : {sensorCalls(), frameCalls(), colorCalls(), hookCalls()}) {
        for (const NamedCall& call : calls) {
            if (call.name == name) return call.read(line, session);
        }
    }
    failAt(line.at("call"), "unknown function " + Json(name).dump());
}

NSCam::IMetadata* readMetadataName(Fields& arguments, const Session& session) {
    const std::string& name = arguments.text("metadata");
    NSCam::IMetadata* const metadata = session.findMetadata(name);
    if (metadata == nullptr) failAt(arguments.at("metadata"), "no line has made " + Json(name).dump());
    return metadata;
}

NSCam::IMetadata* readMetadataNameOrNull(Fields& arguments, const Session& session) {
    return arguments.get("metadata").is_null() ? nullptr : readMetadataName(arguments, session);
}

}  // namespace replay
