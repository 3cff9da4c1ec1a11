#include <algorithm>
#include <array>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/play/Calls.h"
#include "tools/play/PlayState.h"

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

ColorValues readColorValues(ObjectReader& a) {
    const std::vector<float> list = toList(a.get("array"), a.at("array"), toFloat);
    if (list.size() != kColorValues) {
        failAt(a.at("array"), "expected 18 numbers, got " + std::to_string(list.size()));
    }
    ColorValues result;
    std::copy(list.begin(), list.end(), result.values);
    return result;
}

PreparedCall readConvertColorSensorInfo(ObjectReader& a, const PlayState&) {
    return [type = a.bits32<CustShadingType>("type"), source = a.bytes("source", kSourceSize),
            destination = a.bytes("destination", kDestinationSize)](PlayState& s, ResultLine& out) mutable {
        const long from = addressOf(source.data());
        const long to = addressOf(destination.data());
        s.inLibrary([&] { CustomShadingUtil::ConvertColorSensorInfo(type, from, to); });
        out.addBytes("destination", destination);
    };
}

PreparedCall readQueryMetaInfo(ObjectReader& a, const PlayState& session) {
    const auto type = a.bits32<CustShadingType>("type");
    const NSCam::IMetadata* const metadata = readMetadataName(a, session);
    return [type, metadata, array = readColorValues(a)](PlayState& s, ResultLine& out) mutable {
        s.inLibrary([&] { CustomShadingUtil::QueryMetaInfo(type, addressOf(metadata), array.values); });
        out.add("array", array.values);
    };
}

PreparedCall readUpdateMetaInfo(ObjectReader& a, const PlayState& session) {
    const auto type = a.bits32<CustShadingType>("type");
    NSCam::IMetadata* const metadata = readMetadataName(a, session);
    return [type, metadata, array = readColorValues(a)](PlayState& s, ResultLine& out) {
        s.inLibrary([&] { CustomShadingUtil::UpdateMetaInfo(type, addressOf(metadata), array.values); });
        out.addMetadata("metadata", *metadata);
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
