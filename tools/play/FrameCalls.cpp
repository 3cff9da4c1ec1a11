#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/play/Calls.h"
#include "tools/play/PlayState.h"

namespace replay {
namespace {

CalcOISValueInput readTiming(const Json& value, const Place& place) {
    ObjectReader fields(value, place);
    CalcOISValueInput input;
    input.sof_timestamp = fields.integer<std::uint64_t>("sof_timestamp", 0);
    input.sof_timestamp_ne = fields.integer<std::uint64_t>("sof_timestamp_ne", 0);
    input.sof_timestamp_se = fields.integer<std::uint64_t>("sof_timestamp_se", 0);
    input.exposure_time = fields.integer<std::uint64_t>("exposure_time", 0);
    input.exposure_time_ne = fields.integer<std::uint64_t>("exposure_time_ne", 0);
    input.exposure_time_se = fields.integer<std::uint64_t>("exposure_time_se", 0);
    fields.finish();
    return input;
}

PreparedCall readUpdateSensorData(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a), frame = a.integer<std::uint32_t>("frame"),
            timestamp = a.integer<std::uint64_t>("timestamp")](PlayState& s, ResultLine&) {
        s.watch().update(sensor, frame, timestamp,
                         [&] { s.inLibrary([&] { CustomShadingUtil::UpdateSensorData(sensor, frame, timestamp); }); });
    };
}

PreparedCall readQuerySensorData(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a), frame = a.integer<std::uint32_t>("frame"),
            timestamp = a.integer<std::uint64_t>("timestamp")](PlayState& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        std::vector<NSCam::Utils::SensorData> samples;
        s.inLibrary([&] { customer.QuerySensorData(samples, sensor, frame, timestamp); });
        out.addSamples("samples", samples);
    };
}

PreparedCall readCalcOISValue(ObjectReader& a, const PlayState&) {
    return [type = a.bits32<std::uint32_t>("type"), input = readTiming(a.get("input"), a.at("input")),
            x = a.doubles("x"), y = a.doubles("y"), frame = a.integer<std::uint32_t>("frame"),
            sensor = sensorOf(a)](PlayState& s, ResultLine& out) mutable {
        const auto shadingType = static_cast<CustShadingType>(type);  // any number may stand here
        s.watch().calculation(sensor, type, input, x, y, [&] {
            s.inLibrary([&] { CustomShadingUtil::CalcOISValue(shadingType, input, &x, &y, frame, sensor); });
        });
        out.add("x", x);
        out.add("y", y);
    };
}

PreparedCall readFillLscOISCompInfo(ObjectReader& a, const PlayState& session) {
    const auto sensor = sensorOf(a);
    NSCam::IMetadata* const metadata = readMetadataNameOrNull(a, session);
    return [sensor, metadata](PlayState& s, ResultLine& out) {
        s.watch().frame(sensor, metadata,
                        [&] { s.inLibrary([&] { CustomShadingUtil::fillLscOISCompInfo(sensor, metadata); }); });
        if (metadata != nullptr) out.addMetadata("metadata", *metadata);
    };
}

PreparedCall readFillLscCalcOISValueInputInfo(ObjectReader& a, const PlayState& session) {
    NSCam::IMetadata* const metadata = readMetadataNameOrNull(a, session);
    return [metadata](PlayState& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        CalcOISValueInput input;
        out.add("result", s.inLibrary([&] { return customer.fillLscCalcOISValueInputInfo(metadata, input); }));
        out.addTiming("input", input);
    };
}

constexpr NamedCall kCalls[] = {
    {"UpdateSensorData", readUpdateSensorData},
    {"QuerySensorData", readQuerySensorData},
    {"CalcOISValue", readCalcOISValue},
    {"fillLscOISCompInfo", readFillLscOISCompInfo},
    {"fillLscCalcOISValueInputInfo", readFillLscCalcOISValueInputInfo},
};

}  // namespace

std::span<const NamedCall> frameCalls() {
    return kCalls;
}

}  // namespace replay
