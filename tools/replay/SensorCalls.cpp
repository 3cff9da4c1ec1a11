#include <memory>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/replay/Calls.h"
#include "tools/replay/FrameReport.h"
#include "tools/replay/Session.h"

namespace replay {
namespace {

using NSCam::Utils::eSensorType;

constexpr std::uint64_t kMaxOtpLength = 65536;  // integers that one QueryOTPInfo may ask for

// What session and report hear of a monitor: `there` says whether the sensor has one after the call.
void reportMonitor(Session& session, std::int32_t sensor, std::uint32_t type, bool there) {
    session.noteMonitor(sensor, there);
    FrameReport* const report = session.report();
    if (report == nullptr) return;
    if (there) {
        report->samples().registered(sensor, eSensorType(static_cast<std::int32_t>(type)));  // as the library passes it
    } else {
        report->samples().unregistered(sensor);
    }
}

// The same for a monitor that was asked to start: `runs` says whether it does.
void reportStart(const Session& session, std::int32_t sensor, bool runs) {
    if (session.report() != nullptr && runs) session.report()->samples().started(sensor);
}

Call readRegisterAndStartSensorMonitor(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), type = a.integer<std::uint32_t>("type")](Session& s,
                                                                                                 ResultLine& out) {
        const bool runs = s.inLibrary([&] { return CustomShadingUtil::RegisterAndStartSensorMonitor(sensor, type); });
        out.addFlag("result", runs);
        reportMonitor(s, sensor, type, runs);
        reportStart(s, sensor, runs);
    };
}

Call readRegisterSensorMonitor(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), type = a.integer<std::uint32_t>("type")](Session& s,
                                                                                                 ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        const bool there = s.inLibrary([&] { return customer.RegisterSensorMonitor(sensor, type); });
        out.addFlag("result", there);
        reportMonitor(s, sensor, type, there);
    };
}

Call readStartSensorMonitor(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor")](Session& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        const bool runs = s.inLibrary([&] { return customer.StartSensorMonitor(sensor); });
        out.addFlag("result", runs);
        reportStart(s, sensor, runs);
    };
}

Call readUnRegisterSensorMonitor(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor")](Session& s, ResultLine&) {
        s.inLibrary([&] { CustomShadingUtil::UnRegisterSensorMonitor(sensor); });
        reportMonitor(s, sensor, 0, false);
    };
}

Call readIsEnabled(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor")](Session& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        out.addFlag("result", s.inLibrary([&] { return customer.IsEnabled(sensor); }));
    };
}

Call readStoreRollingShutter(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), mode = a.integer<std::uint32_t>("mode")](
               Session& s, ResultLine&) { s.inLibrary([&] { CustomShadingUtil::StoreRollingShutter(sensor, mode); }); };
}

Call readQueryRollingShutter(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor")](Session& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        out.addNumber("result", s.inLibrary([&] { return customer.QueryRollingShutter(sensor); }));
    };
}

Call readGetMultiTableIndex(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), index = a.integer<std::int32_t>("index", -1)](Session& s,
                                                                                                      ResultLine& out) {
        int result = index;
        s.inLibrary([&] { CustomShadingUtil::GetMultiTableIndex(result, sensor); });
        out.addNumber("index", result);
    };
}

Call readQueryOTPInfo(Fields& a, const Session&) {
    const auto sensor = a.integer<std::int32_t>("sensor");
    const std::uint64_t length = integerBits(a.get("length"), a.at("length"), 0, kMaxOtpLength);
    return [sensor, length, fill = a.integer<std::int32_t>("fill", 0)](Session& s, ResultLine& out) {
        // Not a vector: the array has an address even without elements, and its exact length for checking tools.
        const std::unique_ptr<int[]> array(new int[length]);
        const std::span elements(array.get(), length);
        for (int& element : elements)
            element = fill;
        s.inLibrary([&] { CustomShadingUtil::QueryOTPInfo(array.get(), length, sensor); });
        out.addList("array", std::span<const int>(elements));
    };
}

Call readIsSupportFeature(Fields& a, const Session&) {
    return [feature = a.integer<std::uint32_t>("feature"), sensor = a.integer<std::int32_t>("sensor")](
               Session& s, ResultLine& out) {
        out.addFlag("result", s.inLibrary([&] { return CustomShadingUtil::IsSupportFeature(feature, sensor); }));
    };
}

Call readIsEnableOisCompensation(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor"), argument = a.integer<std::uint32_t>("argument", 0)](
               Session& s, ResultLine& out) {
        const auto call = [&] { return CustomShadingUtil::IsEnableOisCompensation(sensor, argument); };
        out.addFlag("result", s.inLibrary(call));
    };
}

Call readIsSupportSeamlessSwitchForRemosaic(Fields& a, const Session&) {
    return [sensor = a.integer<std::int32_t>("sensor")](Session& s, ResultLine& out) {
        const auto call = [&] { return CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(sensor); };
        out.addFlag("result", s.inLibrary(call));
    };
}

constexpr NamedCall kCalls[] = {
    {"IsSupportFeature", readIsSupportFeature},
    {"IsEnableOisCompensation", readIsEnableOisCompensation},
    {"IsSupportSeamlessSwitchForRemosaic", readIsSupportSeamlessSwitchForRemosaic},
    {"GetMultiTableIndex", readGetMultiTableIndex},
    {"QueryOTPInfo", readQueryOTPInfo},
    {"RegisterAndStartSensorMonitor", readRegisterAndStartSensorMonitor},
    {"RegisterSensorMonitor", readRegisterSensorMonitor},
    {"StartSensorMonitor", readStartSensorMonitor},
    {"UnRegisterSensorMonitor", readUnRegisterSensorMonitor},
    {"IsEnabled", readIsEnabled},
    {"StoreRollingShutter", readStoreRollingShutter},
    {"QueryRollingShutter", readQueryRollingShutter},
};

}  // namespace

std::span<const NamedCall> sensorCalls() {
    return kCalls;
}

}  // namespace replay
