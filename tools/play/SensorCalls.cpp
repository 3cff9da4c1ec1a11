#include <memory>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tools/play/Calls.h"
#include "tools/play/PlayState.h"
#include "tools/session/Limits.h"

namespace replay {
namespace {

// What a call has made of the sensor's monitor: whether there is one now, and whether it was asked to start and runs.
void noteMonitor(PlayState& s, std::int32_t sensor, bool there, bool runs) {
    if (!there) return s.watch().monitorUnregistered(sensor);
    s.watch().monitorRegistered(sensor);
    if (runs) s.watch().monitorStarted(sensor);
}

// A call of the facade that gives a result and nothing else.
template <typename Question>
PreparedCall ask(Question question) {
    return [question](PlayState& s, ResultLine& out) { out.add("result", s.inLibrary(question)); };
}

// The same of the customer object.
template <typename Question>
PreparedCall askCustomer(Question question) {
    return [question](PlayState& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        out.add("result", s.inLibrary([&] { return question(customer); }));
    };
}

PreparedCall readRegisterAndStartSensorMonitor(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a), type = a.integer<std::uint32_t>("type")](PlayState& s, ResultLine& out) {
        const bool runs = s.inLibrary([&] { return CustomShadingUtil::RegisterAndStartSensorMonitor(sensor, type); });
        out.add("result", runs);
        noteMonitor(s, sensor, runs, runs);
    };
}

PreparedCall readRegisterSensorMonitor(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a), type = a.integer<std::uint32_t>("type")](PlayState& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        const bool there = s.inLibrary([&] { return customer.RegisterSensorMonitor(sensor, type); });
        out.add("result", there);
        noteMonitor(s, sensor, there, false);
    };
}

PreparedCall readStartSensorMonitor(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a)](PlayState& s, ResultLine& out) {
        TarvoShadingCustomUtil& customer = s.customer();
        const bool runs = s.inLibrary([&] { return customer.StartSensorMonitor(sensor); });
        out.add("result", runs);
        if (runs) s.watch().monitorStarted(sensor);
    };
}

PreparedCall readUnRegisterSensorMonitor(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a)](PlayState& s, ResultLine&) {
        s.inLibrary([&] { CustomShadingUtil::UnRegisterSensorMonitor(sensor); });
        noteMonitor(s, sensor, false, false);
    };
}

PreparedCall readIsEnabled(ObjectReader& a, const PlayState&) {
    return askCustomer([sensor = sensorOf(a)](auto& customer) { return customer.IsEnabled(sensor); });
}

PreparedCall readStoreRollingShutter(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a), mode = a.integer<std::uint32_t>("mode")](PlayState& s, ResultLine&) {
        s.inLibrary([&] { CustomShadingUtil::StoreRollingShutter(sensor, mode); });
    };
}

PreparedCall readQueryRollingShutter(ObjectReader& a, const PlayState&) {
    return askCustomer([sensor = sensorOf(a)](auto& customer) { return customer.QueryRollingShutter(sensor); });
}

PreparedCall readGetMultiTableIndex(ObjectReader& a, const PlayState&) {
    return [sensor = sensorOf(a), index = a.integer<std::int32_t>("index", -1)](PlayState& s, ResultLine& out) {
        int result = index;
        s.inLibrary([&] { CustomShadingUtil::GetMultiTableIndex(result, sensor); });
        out.add("index", result);
    };
}

PreparedCall readQueryOTPInfo(ObjectReader& a, const PlayState&) {
    const auto sensor = sensorOf(a);
    const std::uint64_t length = integerBits(a.get("length"), a.at("length"), 0, kMaxOtpLength);
    return [sensor, length, fill = a.integer<std::int32_t>("fill", 0)](PlayState& s, ResultLine& out) {
        // Not a vector: the array has an address even without elements, and its exact length for checking tools.
        const std::unique_ptr<int[]> array(new int[length]);
        const std::span elements(array.get(), length);
        for (int& element : elements)
            element = fill;
        s.inLibrary([&] { CustomShadingUtil::QueryOTPInfo(array.get(), length, sensor); });
        out.add("array", elements);
    };
}

PreparedCall readIsSupportFeature(ObjectReader& a, const PlayState&) {
    return ask([feature = a.integer<std::uint32_t>("feature"), sensor = sensorOf(a)] {
        return CustomShadingUtil::IsSupportFeature(feature, sensor);
    });
}

PreparedCall readIsEnableOisCompensation(ObjectReader& a, const PlayState&) {
    return ask([sensor = sensorOf(a), argument = a.integer<std::uint32_t>("argument", 0)] {
        return CustomShadingUtil::IsEnableOisCompensation(sensor, argument);
    });
}

PreparedCall readIsSupportSeamlessSwitchForRemosaic(ObjectReader& a, const PlayState&) {
    return ask([sensor = sensorOf(a)] { return CustomShadingUtil::IsSupportSeamlessSwitchForRemosaic(sensor); });
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
