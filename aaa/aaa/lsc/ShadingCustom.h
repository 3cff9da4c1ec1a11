// Per-sensor hook objects that the platform's shading manager drives. In this system the hooks log their input and
// change nothing; the debug record gets a fixed pattern. Hooks keep no state: any order, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "aaa/aaa/lsc/Export.h"

// The records below are exchanged with the platform: their layouts are fixed.

struct custom_shading_init_info {
    std::int32_t dummy;
    std::uint32_t eSensorDev;  // sensor device, an enumeration of the platform
    std::int32_t i4SensorIdx;
};
static_assert(offsetof(custom_shading_init_info, dummy) == 0 && offsetof(custom_shading_init_info, eSensorDev) == 4 &&
              offsetof(custom_shading_init_info, i4SensorIdx) == 8 && sizeof(custom_shading_init_info) == 12);

struct custom_shading_config_info {
    std::int32_t dummy;
    std::uint32_t eSensorMode;  // sensor mode, an enumeration of the platform
    std::uint32_t u4Width;      // pixels
    std::uint32_t u4Height;     // pixels
};
static_assert(offsetof(custom_shading_config_info, dummy) == 0 &&
              offsetof(custom_shading_config_info, eSensorMode) == 4 &&
              offsetof(custom_shading_config_info, u4Width) == 8 &&
              offsetof(custom_shading_config_info, u4Height) == 12 && sizeof(custom_shading_config_info) == 16);

struct custom_shading_setParam_info {
    std::int32_t dummy;
    std::uint8_t fgLscOnOff;  // shading on or off
    std::uint64_t request_id;
    std::int32_t seamlessSensorMode;
};
static_assert(offsetof(custom_shading_setParam_info, dummy) == 0 &&
              offsetof(custom_shading_setParam_info, fgLscOnOff) == 4 &&
              offsetof(custom_shading_setParam_info, request_id) == 8 &&
              offsetof(custom_shading_setParam_info, seamlessSensorMode) == 16 &&
              sizeof(custom_shading_setParam_info) == 24);

struct custom_shading_calc_info {
    std::int32_t dummy;
    std::int32_t rto;
    std::uint32_t eCmd;  // command, an enumeration of the platform
    std::uint32_t u4FrmId;
    void* prTSFStatR1;  // only logged
};
static_assert(offsetof(custom_shading_calc_info, dummy) == 0 && offsetof(custom_shading_calc_info, rto) == 4 &&
              offsetof(custom_shading_calc_info, eCmd) == 8 && offsetof(custom_shading_calc_info, u4FrmId) == 12 &&
              offsetof(custom_shading_calc_info, prTSFStatR1) == 16 && sizeof(custom_shading_calc_info) == 24);

struct custom_shading_result_info {
    std::int32_t dummy;
};
static_assert(offsetof(custom_shading_result_info, dummy) == 0 && sizeof(custom_shading_result_info) == 4);

struct custom_shading_uninit_info {
    std::int32_t dummy;
};
static_assert(offsetof(custom_shading_uninit_info, dummy) == 0 && sizeof(custom_shading_uninit_info) == 4);

// The shading debug record: tag/value pairs from SHAD_TAG_VERSION to SHAD_TAG_END, then zeros.
enum ShadingDebugTag : std::uint32_t { SHAD_TAG_VERSION = 0, SHAD_TAG_END = 526 };
struct SHADING_DEBUG_INFO_S {
    struct Pair {
        std::uint32_t tag;
        std::uint32_t value;
    } pairs[SHAD_TAG_END + 1];
    std::uint8_t reserved[72];
};
static_assert(offsetof(SHADING_DEBUG_INFO_S, pairs) == 0 && sizeof(SHADING_DEBUG_INFO_S::Pair) == 8 &&
              offsetof(SHADING_DEBUG_INFO_S::Pair, tag) == 0 && offsetof(SHADING_DEBUG_INFO_S::Pair, value) == 4 &&
              offsetof(SHADING_DEBUG_INFO_S, reserved) == 4216 && sizeof(SHADING_DEBUG_INFO_S) == 4288);

class CustomShadingFlow {
public:
    // The object of a sensor index, made on the first call for it and kept until the library is unloaded. Null, with an
    // error message, for an index outside 0 to 19. Null when there is no memory; the next call then tries again.
    LSC_EXPORT static CustomShadingFlow* getInstance(int sensorIdx) noexcept;

    LSC_EXPORT explicit CustomShadingFlow(int sensorIdx) noexcept;
    LSC_EXPORT ~CustomShadingFlow();

    LSC_EXPORT void init(custom_shading_init_info& info) noexcept;
    LSC_EXPORT void config(custom_shading_config_info& info) noexcept;
    LSC_EXPORT void setParam(custom_shading_setParam_info& info) noexcept;
    LSC_EXPORT void calculate(custom_shading_calc_info& info, std::vector<unsigned int>& resultTable) noexcept;
    LSC_EXPORT void getResult(custom_shading_result_info& info) noexcept;
    LSC_EXPORT void uninit(custom_shading_uninit_info& info) noexcept;

    // Fills the whole record.
    LSC_EXPORT void setCustomShadingDebugInfo(SHADING_DEBUG_INFO_S& info) noexcept;

private:
    [[maybe_unused]] std::int32_t mSensorIdx;  // the index it was made for
};
static_assert(sizeof(CustomShadingFlow) == 4);
