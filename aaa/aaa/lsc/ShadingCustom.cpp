#include "aaa/aaa/lsc/ShadingCustom.h"

#include <memory>
#include <mutex>

#define LSC_LOG_TAG "CustomShading"
#include "aaa/aaa/lsc/ShadingLog.h"

namespace {

constexpr unsigned int kMaxInstances = 20;

// Marks of the debug record.
constexpr std::uint32_t kDebugTagBase = 0x06000000;
constexpr std::uint32_t kDebugValue = 777;

// The holder of one sensor index's object.
template <typename T>
struct INST_T {
    std::once_flag once;
    std::unique_ptr<T> instance;
};

// What is logged of a result table; 0 for an empty one.
int firstOf(const std::vector<unsigned int>& table) {
    return table.empty() ? 0 : static_cast<int>(table.front());
}

// Destroyed at unload, the last slot first.
constinit INST_T<CustomShadingFlow> sInstances[kMaxInstances];

}  // namespace

CustomShadingFlow* CustomShadingFlow::getInstance(int sensorIdx) noexcept try {
    if (static_cast<unsigned int>(sensorIdx) >= kMaxInstances) {
        LSC_LOG_ERROR("Unsupport sensor Index:%d\n", sensorIdx);
        return nullptr;
    }
    auto& [once, instance] = sInstances[sensorIdx];
    std::call_once(
        once, [sensorIdx](auto& slot) { slot = std::make_unique<CustomShadingFlow>(sensorIdx); }, instance);
    return instance.get();
} catch (...) {
    return nullptr;
}

CustomShadingFlow::CustomShadingFlow(int sensorIdx) noexcept : mSensorIdx(sensorIdx) {}

CustomShadingFlow::~CustomShadingFlow() = default;

void CustomShadingFlow::init(custom_shading_init_info& info) noexcept {
    LSC_LOG_DEBUG("dummy(%d), eSensorDev(%d), i4SensorIdx(%d)", info.dummy, lsc::log::dec(info.eSensorDev),
                  info.i4SensorIdx);
}

void CustomShadingFlow::config(custom_shading_config_info& info) noexcept {
    LSC_LOG_DEBUG("dummy(%d), eSensorMode(%d), u4Width(%d), u4Height(%d)", info.dummy, lsc::log::dec(info.eSensorMode),
                  lsc::log::dec(info.u4Width), lsc::log::dec(info.u4Height));
}

void CustomShadingFlow::setParam(custom_shading_setParam_info& info) noexcept {
    LSC_LOG_DEBUG("dummy(%d), fgLscOnOff(%d), request_id(%lu), seamlessSensorMode(%d)", info.dummy, info.fgLscOnOff,
                  info.request_id, info.seamlessSensorMode);
}

void CustomShadingFlow::calculate(custom_shading_calc_info& info, std::vector<unsigned int>& resultTable) noexcept {
    LSC_LOG_DEBUG("dummy(%d), rto(%d), eCmd(%d), u4FrmId(%d), prTSFStatR1(%p), resultTable[0](%d)", info.dummy,
                  info.rto, lsc::log::dec(info.eCmd), lsc::log::dec(info.u4FrmId), info.prTSFStatR1,
                  firstOf(resultTable));
}

void CustomShadingFlow::getResult(custom_shading_result_info& info) noexcept {
    LSC_LOG_DEBUG("dummy(%d)", info.dummy);
}

void CustomShadingFlow::uninit(custom_shading_uninit_info& info) noexcept {
    LSC_LOG_DEBUG("dummy(%d)", info.dummy);
}

void CustomShadingFlow::setCustomShadingDebugInfo(SHADING_DEBUG_INFO_S& info) noexcept {
    info = {};
    for (std::uint32_t tag = SHAD_TAG_VERSION; tag <= SHAD_TAG_END; ++tag) {
        info.pairs[tag] = {kDebugTagBase | tag, kDebugValue};
    }
    LSC_LOG_DEBUG("SHAD_TAG_VERSION(%d), SHAD_TAG_END(%d), value(%d)", lsc::log::dec(SHAD_TAG_VERSION),
                  lsc::log::dec(SHAD_TAG_END), lsc::log::dec(kDebugValue));
}
