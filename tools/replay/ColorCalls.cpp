#include <algorithm>
#include <array>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/replay/Calls.h"
#include "tools/replay/Session.h"

namespace replay {
namespace {

constexpr std::size_t kSourceSize = 72;        // bytes of the source record
constexpr std::size_t kDestinationSize = 672;  // bytes of the destination record that the library may write
constexpr std::size_t kColorValues = 18;

// The platform passes these addresses as numbers.
long addressOf(const void* object) {
    return reinterpret_cast<long>(object);
}

struct ColorValues {
    float values[kColorValues];
};

ColorValues readColorValues(Fields& a) {
    const std::vector<float> list = toList(a.get("array"), a.at("array"), toFloat);
    if (list.size() != kColorValues) {
        failAt(a.at("array"), "expected 18 numbers, got " + std::to_string(list.size()));
    }
    ColorValues result;
    std::copy(list.begin(), list.end(), result.values);
    return result;
}

Call readConvertColorSensorInfo(Fields& a, const Session&) {
    return [type = a.bits32<CustShadingType>("type"), source = a.bytes("source", kSourceSize),
            destination = a.bytes("destination", kDestinationSize)](Session& s, ResultLine& out) mutable {
        const long from = addressOf(source.data());
        const long to = addressOf(destination.data());
        s.inLibrary([&] { CustomShadingUtil::ConvertColorSensorInfo(type, from, to); });
        out.addBytes("destination", destination);
    };
}

Call readQueryMetaInfo(Fields& a, const Session& session) {
    const auto type = a.bits32<CustShadingType>("type");
    const NSCam::IMetadata* const metadata = readMetadataName(a, session);
    return [type, metadata, array = readColorValues(a)](Session& s, ResultLine& out) mutable {
        s.inLibrary([&] { CustomShadingUtil::QueryMetaInfo(type, addressOf(metadata), array.values); });
        out.addList("array", std::span<const float>(array.values));
    };
}

Call readUpdateMetaInfo(Fields& a, const Session& session) {
    const auto type = a.bits32<CustShadingType>("type");
    NSCam::IMetadata* const metadata = readMetadataName(a, session);
    return [type, metadata, array = readColorValues(a)](Session& s, ResultLine& out) {
        s.inLibrary([&] { CustomShadingUtil::UpdateMetaInfo(type, addressOf(metadata), array.values); });
        out.addMetadata("metadata", host::metadataEntries(*metadata));
    };
}

constexpr NamedCall kCalls[] = {
    {"ConvertColorSensorInfo", readConvertColorSensorInfo},
    {"QueryMetaInfo", readQueryMetaInfo},
    {"UpdateMetaInfo", readUpdateMetaInfo},
};

}  // namespace

std::span<const NamedCall> colorCalls() {
    return kCalls;
}

}  // namespace replay
