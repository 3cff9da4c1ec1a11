// The customer utility object: one per process, made by the first facade call, never destroyed. It owns the monitors of
// the OIS hall sensors, the settings read from system properties, and each sensor's OTP result.
//
// Every member may be called from any thread and returns without throwing; what the standard library or the platform
// throws ends in the neutral result (false, 0, outputs as they were). Locks: `mSensorMonitorMutex` before a sample
// buffer's lock; an `otpMutex` is never held together with either.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "aaa/aaa/lsc/Export.h"
#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "aaa/aaa/lsc/ThreadAnnotations.h"
#include "customer/aaa/aaa/lsc/OtpRecords.h"
#include "platform/SensorProvider.h"

class LSC_EXPORT TarvoShadingCustomUtil {
public:
    class LSC_HIDDEN TarvoSensorData;     // the samples of one sensor; see TarvoSensorMonitor.h
    class LSC_HIDDEN TarvoSensorMonitor;  // one sensor's subscription and samples; same header

    static constexpr unsigned int kMaxSensorNum = 14;  // per-sensor OTP records: ids 0 to 13

    // Reads the five properties (see the fields). They are not read again.
    TarvoShadingCustomUtil() noexcept;

    TarvoShadingCustomUtil(const TarvoShadingCustomUtil&) = delete;
    TarvoShadingCustomUtil& operator=(const TarvoShadingCustomUtil&) = delete;

    // ---- Sensor and feature queries (contracts in CustomShadingUtil where the name is the same) -----------------

    bool IsSupportFeature(unsigned int feature, int sensorId) noexcept;
    bool IsEnableOisCompensation(int sensorId, unsigned int argument) noexcept;
    bool IsSupportSeamlessSwitchForRemosaic(int sensorId) noexcept;

    // Whether the sensor's monitor is registered and its subscription runs. Any id may be asked.
    bool IsEnabled(int sensorId) noexcept;

    // Sends one command to the driver of a sensor. The three arguments are values or addresses, as the command defines;
    // memory behind them stays as it was when the driver cannot be reached. Takes no lock, checks no id.
    void QuerySensorInfo(int sensorId, unsigned long command, unsigned long argument1, unsigned long argument2,
                         unsigned long argument3) noexcept;

    // ---- OTP calibration ----------------------------------------------------------------------------------------

    // The one OTP read of a sensor, for the library's own use: its caller holds the sensor's `otpMutex`, which nobody
    // outside can take. Does nothing for a sensor already read and for an id outside 0 to 13. Reports through the
    // sensor's OTPState alone.
    void ReadOTPInfo(int sensorId) noexcept LSC_REQUIRES(mOTPState[sensorId].otpMutex);

    // Writes the OIS calibration table at `source` reordered to `destination`, both 2 * rows * entries bytes as the
    // sensor's layout record says: entry 0 of a row stays, entries 1 to n - 1 are reversed. They must not overlap, and
    // the sensor's OTP read must be over. An id outside 0 to 13, a null pointer and a table larger than an OTP memory
    // are refused with an error message.
    void SwapOTPInfo(unsigned char* source, unsigned char* destination, int sensorId) noexcept;

    void GetMultiTableIndex(int& index, int sensorId) noexcept;
    void QueryOTPInfo(int* array, unsigned long length, int sensorId) noexcept;

    void StoreRollingShutter(int sensorId, unsigned int sensorMode) noexcept;
    // The rolling-shutter time (ns) kept for the sensor; 0 without one.
    unsigned int QueryRollingShutter(int sensorId) noexcept;

    // ---- Sensor monitors; any signed id is a key ----------------------------------------------------------------

    bool RegisterAndStartSensorMonitor(int sensorId, unsigned int sensorType) noexcept;
    // Adds a monitor that is not started yet, unless the sensor has one, which keeps its type. True when the sensor
    // has a monitor afterwards, false when there was no memory for one.
    bool RegisterSensorMonitor(int sensorId, unsigned int sensorType) noexcept;
    // Starts the sensor's monitor; true when it runs.
    bool StartSensorMonitor(int sensorId) noexcept;
    void UnRegisterSensorMonitor(int sensorId) noexcept;
    void UpdateSensorData(int sensorId, unsigned int frame, unsigned long timestamp) noexcept;

    // Replaces `samples` with the 100 buffered samples around `timestamp` (ns), in time order; with `timestamp` 0, by
    // those filed under `frame`. Left untouched when there are none. Both 0 is an error.
    void QuerySensorData(std::vector<NSCam::Utils::SensorData>& samples, int sensorId, unsigned int frame,
                         unsigned long timestamp) noexcept;

    // ---- OIS compensation ---------------------------------------------------------------------------------------

    void CalcOISValue(CustShadingType type, const CalcOISValueInput& input, std::vector<double>* x,
                      std::vector<double>* y, const unsigned int& frame, const int& sensorId) noexcept;

    // Reads a frame's timing from its metadata; values that are missing are 0. Returns 0 when exposure and start of
    // frame were there, -1 for a null pointer, otherwise the status of the reads; -1 with `input` as it was when the
    // platform throws.
    int fillLscCalcOISValueInputInfo(NSCam::IMetadata* metadata, CalcOISValueInput& input) noexcept;
    void fillLscOISCompInfo(int sensorId, NSCam::IMetadata* metadata) noexcept;

    // The one object of the process, and the lock of its creation alone.
    static std::mutex mSingleMutex;
    static TarvoShadingCustomUtil* mSingleInstance LSC_GUARDED_BY(mSingleMutex);

private:
    LSC_HIDDEN TarvoSensorMonitor* findMonitor(int sensorId) LSC_REQUIRES(mSensorMonitorMutex);
    // In ns; 0 without a monitor or a stored time. Throws when the lock fails.
    LSC_HIDDEN std::uint32_t rollingShutterOf(int sensorId) LSC_EXCLUDES(mSensorMonitorMutex);
    // Reads the sensor's OTP memory unless that was tried before, and returns the result. The id must be valid.
    LSC_HIDDEN const OTPState& readOtpOnce(int sensorId);

    std::mutex mSensorMonitorMutex;
    std::vector<std::shared_ptr<TarvoSensorMonitor>> mSensorMonitors LSC_GUARDED_BY(mSensorMonitorMutex);

    // Settings (Settings.h): constant after construction.
    std::int32_t mLogLevel = 0;
    std::int32_t mOisDumpEnable = 0;
    std::int32_t mOisCalCMode = 0;
    std::int32_t mForceMultiTableIndex = 0;
    std::int32_t mDisableOisCompensation = 0;

    OTPState mOTPState[kMaxSensorNum];
    OTPInfo mOTPInfo[kMaxSensorNum] = {};
};
