#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/replay/Calls.h"
#include "tools/replay/FrameInquiry.h"
#include "tools/replay/FrameReport.h"
#include "tools/replay/Session.h"

namespace replay {
namespace {

// For a session whose frames are reported.
Questions questionsTo(Session& session) {
    return Questions(session.customer(), session.report()->samples(), session.logSwitches(), session.calculationMode());
}

CalcOISValueInput readTiming(const Json& value, const Place& place) {
    Fields fields(value, place);
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

Call readUpdateSensorData(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), frame = a.integer<std::uint32_t>("frame"),
            timestamp = a.integer<std::uint64_t>("timestamp")](Session& s, ResultLine&) {
        const auto update = [&] {
            s.inLibrary([&] { CustomShadingUtil::UpdateSensorData(sensor, frame, timestamp); });
        };
        if (FrameReport* const report = s.report()) {
            report->samples().watch(sensor, frame, update);
        } else {
            update();
        }
    };
}

Call readQuerySensorData(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), frame = a.integer<std::uint32_t>("frame"),
            timestamp = a.integer<std::uint64_t>("timestamp")](Session& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        std::vector<NSCam::Utils::SensorData> samples;
        s.inLibrary([&] { customer.QuerySensorData(samples, sensor, frame, timestamp); });
        out.addSamples("samples", samples);
    };
}

Call readCalcOISValue(Fields& a, const Session&) {
    return [type = a.bits32<std::uint32_t>("type"), input = readTiming(a.get("input"), a.at("input")),
            x = a.doubles("x"), y = a.doubles("y"), frame = a.integer<std::uint32_t>("frame"),
            sensor = a.integer<std::int32_t>("sensor")](Session& s, ResultLine& out) mutable {
        const CalculationInquiry inquiry(sensor, type, input, x, y);
        const auto shadingType = static_cast<CustShadingType>(type);  // any number may stand here
        s.inLibrary([&] { CustomShadingUtil::CalcOISValue(shadingType, input, &x, &y, frame, sensor); });
        out.addList("x", std::span<const double>(x));
        out.addList("y", std::span<const double>(y));
        if (FrameReport* const report = s.report()) {
            Questions questions = questionsTo(s);
            report->addFrame({inquiry.outcome(questions, x, y)});
        }
    };
}

Call readFillLscOISCompInfo(Fields& a, const Session& session) {
    const auto sensor = a.integer<std::int32_t>("sensor");
    NSCam::IMetadata* const metadata = readMetadataNameOrNull(a, session);
    return [sensor, metadata](Session& s, ResultLine& out) {
        std::optional<FrameInquiry> inquiry;
        if (s.report() != nullptr) inquiry.emplace(sensor, metadata);
        s.inLibrary([&] { CustomShadingUtil::fillLscOISCompInfo(sensor, metadata); });
        if (metadata != nullptr) out.addMetadata("metadata", host::metadataEntries(*metadata));
        if (inquiry) {
            Questions questions = questionsTo(s);
            s.report()->addFrame(inquiry->outcomes(questions));
        }
    };
}

Call readFillLscCalcOISValueInputInfo(Fields& a, const Session& session) {
    NSCam::IMetadata* const metadata = readMetadataNameOrNull(a, session);
    return [metadata](Session& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        CalcOISValueInput input;
        out.addNumber("result", s.inLibrary([&] { return customer.fillLscCalcOISValueInputInfo(metadata, input); }));
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
