#include <cstring>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "tools/play/Calls.h"
#include "tools/play/PlayState.h"

namespace replay {
namespace {

// The instance that the argument `index` names; only getInstance makes one.
CustomShadingFlow* readInstance(ObjectReader& a, const PlayState& session) {
    const auto index = a.integer<std::int32_t>("index");
    CustomShadingFlow* const instance = session.findInstance(index);
    if (instance == nullptr)
        failAt(a.at("index"), "no earlier getInstance gave an instance for " + std::to_string(index));
    return instance;
}

PreparedCall readGetInstance(ObjectReader& a, const PlayState&) {
    return [index = a.integer<std::int32_t>("index")](PlayState& s, ResultLine& out) {
        CustomShadingFlow* const instance = s.inLibrary([&] { return CustomShadingFlow::getInstance(index); });
        if (instance != nullptr) s.putInstance(index, instance);
        out.add("result", instance != nullptr);
    };
}

// A hook that takes one record and gives nothing back.
template <typename Info, void (CustomShadingFlow::*kHook)(Info&) noexcept>
PreparedCall callHook(CustomShadingFlow* instance, Info record) {
    return [instance, record](PlayState& s, ResultLine&) mutable { s.inLibrary([&] { (instance->*kHook)(record); }); };
}

PreparedCall readInit(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    custom_shading_init_info info{};
    info.dummy = a.bits32OrZero<std::int32_t>("dummy");
    info.eSensorDev = a.bits32OrZero<std::uint32_t>("eSensorDev");
    info.i4SensorIdx = a.bits32OrZero<std::int32_t>("i4SensorIdx");
    return callHook<custom_shading_init_info, &CustomShadingFlow::init>(instance, info);
}

PreparedCall readConfig(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    custom_shading_config_info info{};
    info.dummy = a.bits32OrZero<std::int32_t>("dummy");
    info.eSensorMode = a.bits32OrZero<std::uint32_t>("eSensorMode");
    info.u4Width = a.bits32OrZero<std::uint32_t>("u4Width");
    info.u4Height = a.bits32OrZero<std::uint32_t>("u4Height");
    return callHook<custom_shading_config_info, &CustomShadingFlow::config>(instance, info);
}

PreparedCall readSetParam(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    custom_shading_setParam_info info{};
    info.dummy = a.bits32OrZero<std::int32_t>("dummy");
    info.fgLscOnOff = a.integer<std::uint8_t>("fgLscOnOff", 0);
    info.request_id = a.integer<std::uint64_t>("request_id", 0);
    info.seamlessSensorMode = a.bits32OrZero<std::int32_t>("seamlessSensorMode");
    return callHook<custom_shading_setParam_info, &CustomShadingFlow::setParam>(instance, info);
}

PreparedCall readCalculate(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    custom_shading_calc_info info{};
    info.dummy = a.bits32OrZero<std::int32_t>("dummy");
    info.rto = a.bits32OrZero<std::int32_t>("rto");
    info.eCmd = a.bits32OrZero<std::uint32_t>("eCmd");
    info.u4FrmId = a.bits32OrZero<std::uint32_t>("u4FrmId");
    // The field is an address that the library prints and never follows.
    info.prTSFStatR1 = reinterpret_cast<void*>(a.integer<std::uintptr_t>("prTSFStatR1", 0));
    return [instance, info, table = toList(a.get("table"), a.at("table"), toInteger<unsigned int>)](
               PlayState& s, ResultLine& out) mutable {
        s.inLibrary([&] { instance->calculate(info, table); });
        out.add("table", table);
    };
}

PreparedCall readGetResult(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    const custom_shading_result_info info{a.bits32OrZero<std::int32_t>("dummy")};
    return callHook<custom_shading_result_info, &CustomShadingFlow::getResult>(instance, info);
}

PreparedCall readUninit(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    const custom_shading_uninit_info info{a.bits32OrZero<std::int32_t>("dummy")};
    return callHook<custom_shading_uninit_info, &CustomShadingFlow::uninit>(instance, info);
}

PreparedCall readSetCustomShadingDebugInfo(ObjectReader& a, const PlayState& session) {
    CustomShadingFlow* const instance = readInstance(a, session);
    return [instance, before = a.integer<std::uint8_t>("before", 0)](PlayState& s, ResultLine& out) {
        SHADING_DEBUG_INFO_S record;
        std::memset(&record, before, sizeof record);
        s.inLibrary([&] { instance->setCustomShadingDebugInfo(record); });
        std::uint8_t bytes[sizeof record];
        std::memcpy(bytes, &record, sizeof record);
        out.addBytes("record", bytes);
    };
}

constexpr NamedCall kCalls[] = {
    {"getInstance", readGetInstance}, {"init", readInit},
    {"config", readConfig},           {"setParam", readSetParam},
    {"calculate", readCalculate},     {"getResult", readGetResult},
    {"uninit", readUninit},           {"setCustomShadingDebugInfo", readSetCustomShadingDebugInfo},
};

}  // namespace

std::span<const NamedCall> hookCalls() {
    return kCalls;
}

}  // namespace replay
