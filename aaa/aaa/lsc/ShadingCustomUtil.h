// The static facade through which the platform's shading manager reaches the customer logic, with the two types that
// its calls exchange. Every function may be called from any thread, returns without throwing, and leaves its outputs as
// the caller passed them when it has nothing to give.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "aaa/aaa/lsc/Export.h"

namespace NSCam {
class IMetadata;
}

// The kind of work that a call asks for. Each function takes only its own kinds and refuses the others with an error
// message; the platform may pass any 32-bit number.
enum class CustShadingType : std::uint32_t {
    kFrame = 0,            // CalcOISValue: the frame's own times, no dump
    kSingleExposure = 1,   // CalcOISValue: the frame's own times
    kColorSensorInfo = 2,  // colour sensor info of the frame metadata
    kSeExposureOnly = 4,   // CalcOISValue: the se exposure's times, no dump
    kMultiExposureNe = 5,  // CalcOISValue: the ne exposure's times
    kMultiExposureSe = 6,  // CalcOISValue: the se exposure's times
};

// Timing of one frame, all in ns. A start-of-frame time of 0 means that it is unknown.
struct CalcOISValueInput {
    std::uint64_t sof_timestamp = 0;     // start of frame
    std::uint64_t sof_timestamp_ne = 0;  // start of frame of the ne exposure of a multi-exposure frame
    std::uint64_t sof_timestamp_se = 0;  // start of frame of the se exposure
    std::uint64_t exposure_time = 0;     // exposure time of the frame
    std::uint64_t exposure_time_ne = 0;  // exposure time of the ne exposure
    std::uint64_t exposure_time_se = 0;  // exposure time of the se exposure
};
static_assert(offsetof(CalcOISValueInput, sof_timestamp) == 0 && offsetof(CalcOISValueInput, sof_timestamp_ne) == 8 &&
              offsetof(CalcOISValueInput, sof_timestamp_se) == 16 && offsetof(CalcOISValueInput, exposure_time) == 24 &&
              offsetof(CalcOISValueInput, exposure_time_ne) == 32 &&
              offsetof(CalcOISValueInput, exposure_time_se) == 40 && sizeof(CalcOISValueInput) == 48);

// Features that IsSupportFeature knows; every other is unsupported.
inline constexpr unsigned int kFeatureAlways = 1;
inline constexpr unsigned int kFeatureOisCompensation = 2;

// All functions are static; the class has no objects. They forward to the process-wide customer object, which the first
// call creates. Without memory for that object they return false or write nothing, and the next call tries again.
class CustomShadingUtil {
public:
    CustomShadingUtil() = delete;

    // ---- Before a stream: what the module is --------------------------------------------------------------------

    // Whether the sensor supports a feature: kFeatureAlways; kFeatureOisCompensation, which reads the sensor's OTP
    // memory if nothing has done so yet. False for a sensor id outside 0 to 13.
    LSC_EXPORT static bool IsSupportFeature(unsigned int feature, int sensorId) noexcept;

    // Always false. The call serves to read the sensor's OTP memory, unless compensation is disabled by property. The
    // second argument is ignored.
    LSC_EXPORT static bool IsEnableOisCompensation(int sensorId, unsigned int argument) noexcept;

    // Whether the sensor may switch seamlessly into its remosaic mode: in camera mode "high_pixel_mode", with a valid
    // OIS calibration block in its OTP memory.
    LSC_EXPORT static bool IsSupportSeamlessSwitchForRemosaic(int sensorId) noexcept;

    // Sets `index` to the golden shading table the module needs: 1 to 5, or the value that a property forces; 0 when
    // the OTP memory does not say, and for an id outside 0 to 13.
    LSC_EXPORT static void GetMultiTableIndex(int& index, int sensorId) noexcept;

    // Copies the module's OIS calibration table (2-byte entries, packed two per integer) into `array` of `length`
    // integers, up to the end of the shorter one; the rest of the array keeps its values. Nothing is copied without a
    // valid table.
    LSC_EXPORT static void QueryOTPInfo(int* array, unsigned long length, int sensorId) noexcept;

    // ---- Per stream: the hall sensor ----------------------------------------------------------------------------

    // Subscribes to `sensorType` on behalf of the sensor. True when samples are being delivered; on failure the sensor
    // is left unregistered, also when it had been registered before.
    LSC_EXPORT static bool RegisterAndStartSensorMonitor(int sensorId, unsigned int sensorType) noexcept;

    // Asks the sensor driver for the rolling-shutter time of `sensorMode` and keeps it with the sensor's monitor.
    // Nothing is kept when no monitor is registered.
    LSC_EXPORT static void StoreRollingShutter(int sensorId, unsigned int sensorMode) noexcept;

    // Fetches the samples that the provider holds and files them under `frame`. `timestamp` (ns) is only logged.
    LSC_EXPORT static void UpdateSensorData(int sensorId, unsigned int frame, unsigned long timestamp) noexcept;

    // Ends the subscription and discards the samples.
    LSC_EXPORT static void UnRegisterSensorMonitor(int sensorId) noexcept;

    // ---- Per frame: where the lens was --------------------------------------------------------------------------

    // Position of the OIS lens while an exposure of the frame was taken and read out. On success `x` and `y` each hold
    // {position, 0.0}; otherwise, and when either is null, both keep what they held. `frame` is used in messages and
    // the dump file name.
    LSC_EXPORT static void CalcOISValue(CustShadingType type, const CalcOISValueInput& input, std::vector<double>* x,
                                        std::vector<double>* y, const unsigned int& frame,
                                        const int& sensorId) noexcept;

    // Reads the frame's timing from its metadata and writes the position of each exposure back into it, once per frame.
    // A null pointer ends the call.
    LSC_EXPORT static void fillLscOISCompInfo(int sensorId, NSCam::IMetadata* metadata) noexcept;

    // ---- Colour sensor, without the customer object; a null address ends the call -------------------------------

    // Copies the colour-sensor values of the record at address `source` (72 bytes) into a block of the record at
    // address `destination`: kSingleExposure into its bytes 308 to 387, kFrame into its bytes 592 to 671. Neither
    // address needs to be aligned.
    LSC_EXPORT static void ConvertColorSensorInfo(CustShadingType type, long source, long destination) noexcept;

    // Fills `array` with the colour sensor info of the NSCam::IMetadata at address `metadata`; untouched when the
    // metadata has none, or not 18 values. Only kColorSensorInfo.
    LSC_EXPORT static void QueryMetaInfo(CustShadingType type, long metadata, float (&array)[18]) noexcept;

    // Writes `array` as the colour sensor info of the NSCam::IMetadata at address `metadata`. Only kColorSensorInfo.
    LSC_EXPORT static void UpdateMetaInfo(CustShadingType type, long metadata, const float (&array)[18]) noexcept;
};
