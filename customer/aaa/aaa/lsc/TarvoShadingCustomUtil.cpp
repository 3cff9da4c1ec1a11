// All members of the customer utility and of its nested monitor and sample buffer. One piece, because an error message
// names the file that logs it, and log tools know this unit by its name; what computes without logging stands beside
// it.
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

#include "aaa/aaa/lsc/Guard.h"
#include "customer/aaa/aaa/lsc/OisHallDump.h"
#include "customer/aaa/aaa/lsc/OisMetadata.h"
#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "customer/aaa/aaa/lsc/OisTrace.h"
#include "customer/aaa/aaa/lsc/OtpCalibration.h"
#include "customer/aaa/aaa/lsc/Settings.h"
#include "customer/aaa/aaa/lsc/TarvoSensorMonitor.h"
#include "customer/aaa/aaa/lsc/UnitLog.h"
#include "platform/CustomerData.h"
#include "platform/HalSensorList.h"
#include "platform/OtpData.h"
#include "platform/Properties.h"

namespace {

using lsc::log::dec;
using lsc::log::lld;
using lsc::log::llu;
using lsc::log::wide;
using NSCam::Utils::eSensorType;
using NSCam::Utils::SensorProvider;

// Thresholds of the customer log level.
constexpr std::int32_t kTraceLevel = 3;        // every step of a calculation
constexpr std::int32_t kEverySampleLevel = 4;  // every sample received

constexpr std::uint32_t kProviderInterval = 1;

// The member on whose behalf helpers log.
constexpr char kQuerySensorInfo[] = "QuerySensorInfo";
constexpr char kReadOtp[] = "ReadOTPInfo";

constexpr char kSensorUser[] = LSC_LOG_TAG;
constexpr std::string_view kRemosaicCameraMode = "high_pixel_mode";

constexpr int kNoTiming = -1;         // status of a timing read without metadata
constexpr unsigned int kNoFrame = 0;  // samples are looked up by time; metadata carries no frame number

// Unsigned, so that a negative id is out of range as well.
bool hasOtpSlot(int sensorId) {
    return static_cast<unsigned int>(sensorId) < TarvoShadingCustomUtil::kMaxSensorNum;
}

// The same for the member `function`, which reports an id that it refuses.
bool isValidSensorId(const char* function, int sensorId) {
    if (hasOtpSlot(sensorId)) return true;
    LSC_LOG_ERROR_AS(function, "sensorId(%d) is invalid !!!", sensorId);
    return false;
}

std::int32_t readSetting(const char* key) noexcept {
    std::int32_t value = 0;
    lsc::quietly([&] { value = NSCam::Utils::Properties::property_get_int32(key, 0); });
    return value;
}

// Driver commands carry addresses as integers.
unsigned long addressOf(const void* object) {
    return reinterpret_cast<unsigned long>(object);
}

struct ReleaseSensor {
    void operator()(NSCam::IHalSensor* sensor) const noexcept {
        lsc::quietly([sensor] { sensor->release(kSensorUser); });
    }
};

// The name of the current camera mode; empty when the customer library cannot tell.
std::string cameraModeName() {
    const CustomerData* const data = CustomerData::getInstance();
    const CustomMetadata* const metadata = data != nullptr ? data->customMetadata() : nullptr;
    return metadata != nullptr ? metadata->getCameraModeName() : std::string();
}

// Sends a command through a sensor object of its own, and reports for QuerySensorInfo when there is none.
void sendCommand(int sensorId, unsigned long command, unsigned long argument1, unsigned long argument2,
                 unsigned long argument3) {
    NSCam::IHalSensorList* const list = NSCam::IHalSensorList::get();
    if (list == nullptr) {
        LSC_LOG_ERROR_AS(kQuerySensorInfo, "pHalsensorList is null !!!");
        return;
    }
    const std::uint32_t deviceId = list->querySensorDeviceId(sensorId);
    const std::unique_ptr<NSCam::IHalSensor, ReleaseSensor> sensor(list->createSensor(kSensorUser, sensorId));
    if (!sensor) {
        LSC_LOG_ERROR_AS(kQuerySensorInfo, "pHalsensor is null !!!");
        return;
    }
    sensor->sendCommand(deviceId, command, argument1, argument2, argument3);
}

// The sensor's OTP bytes, or null when the provider has none. One that throws has none.
const std::uint8_t* otpBytes(int sensorId) noexcept {
    OTPData data = {};
    const bool answered = lsc::quietly([&] {
        if (TarvoOTPData* const provider = TarvoOTPData::getInstance()) provider->getOTPData(sensorId, data);
    });
    return answered && data.isStored != 0 ? data.bytes : nullptr;
}

void logLayout(int sensorId, const OTPInfo& info) {
    LSC_LOG_DEBUG_AS(
        kReadOtp,
        "sensorId:%d multiGolden[offset:%x, size:%d, valid:%x, gradient:%x, %x] oisCalibration[offset:%x, size:%d, "
        "valid:%x, indexNum:%d, tableNumber:%d]",
        sensorId, info.multiGolden.offset, dec(info.multiGolden.size), info.multiGolden.valid,
        info.multiGolden.gradient, info.multiGolden.flag, info.oisCalibration.offset, dec(info.oisCalibration.size),
        info.oisCalibration.valid, dec(info.oisCalibration.indexNum), dec(info.oisCalibration.tableNumber));
}

void logBlock(int sensorId, const OTPInfo::MultiGolden& layout, const lsc::GoldenBlock& block) {
    if (block.state == lsc::BlockState::kOutside) {
        LSC_LOG_ERROR_AS(kReadOtp, "sensorId:%d, multiGolden[valid:%x, gradient:%x, %x] is not within %u bytes!!!",
                         sensorId, layout.valid, layout.gradient, layout.flag, lsc::kOtpMemorySize);
    } else if (block.state == lsc::BlockState::kNotValid) {
        LSC_LOG_ERROR_AS(kReadOtp, "sensorId:%d, multiGolden is not valid(%d)!!!", sensorId, block.marker);
    } else {
        LSC_LOG_DEBUG_AS(kReadOtp, "sensorId:%d, multi_tbl_idx:%d multiGoldenValid:%d gradient:%d flag:%d", sensorId,
                         block.tableIndex, block.marker, block.gradient.value, block.gradient.sign);
    }
}

void logBlock(int sensorId, const OTPInfo::OisCalibration& layout, const lsc::CalibrationBlock& block) {
    if (block.state == lsc::BlockState::kOutside) {
        LSC_LOG_ERROR_AS(
            kReadOtp,
            "sensorId:%d, oisCalibration[offset:%x, valid:%x, indexNum:%u, tableNumber:%u] is not within %u "
            "bytes!!!",
            sensorId, layout.offset, layout.valid, layout.indexNum, layout.tableNumber, lsc::kOtpMemorySize);
    } else if (block.state == lsc::BlockState::kNotValid) {
        LSC_LOG_ERROR_AS(kReadOtp, "sensorId:%d, oisCalibration is not valid(%d)!!!", sensorId, block.marker);
    } else if (block.state == lsc::BlockState::kNoMemory) {
        LSC_LOG_ERROR_AS(kReadOtp, "sensorId:%d, no memory for oisCalibration of %zu bytes!!!", sensorId,
                         lsc::storedBytes(layout));
    } else {
        LSC_LOG_DEBUG_AS(kReadOtp, "sensorId:%d, oisCalibration is valid(%d)", sensorId, block.marker);
    }
}

}  // namespace

// ---- The object -------------------------------------------------------------------------------------------------

constinit std::mutex TarvoShadingCustomUtil::mSingleMutex;
constinit TarvoShadingCustomUtil* TarvoShadingCustomUtil::mSingleInstance = nullptr;

TarvoShadingCustomUtil::TarvoShadingCustomUtil() noexcept
    : mLogLevel(readSetting(lsc::setting::kLogLevel)),
      mOisDumpEnable(readSetting(lsc::setting::kOisDump)),
      mOisCalCMode(readSetting(lsc::setting::kOisCalculation)),
      mForceMultiTableIndex(readSetting(lsc::setting::kForcedTableIndex)),
      mDisableOisCompensation(readSetting(lsc::setting::kDisableCompensation)) {}

// ---- Sensor and feature queries ---------------------------------------------------------------------------------

bool TarvoShadingCustomUtil::IsSupportFeature(unsigned int feature, int sensorId) noexcept try {
    if (!isValidSensorId(__func__, sensorId)) return false;
    if (feature == kFeatureOisCompensation) return readOtpOnce(sensorId).oisCalibrationValid;
    return feature == kFeatureAlways;
} catch (...) {
    return false;
}

bool TarvoShadingCustomUtil::IsEnableOisCompensation(int sensorId, unsigned int /*argument*/) noexcept try {
    if (!isValidSensorId(__func__, sensorId)) return false;
    if (mDisableOisCompensation >= 1) {
        LSC_LOG_DEBUG("preview Disable ois compensation");
        return false;
    }
    readOtpOnce(sensorId);
    return false;
} catch (...) {
    return false;
}

bool TarvoShadingCustomUtil::IsSupportSeamlessSwitchForRemosaic(int sensorId) noexcept try {
    if (!isValidSensorId(__func__, sensorId)) return false;
    if (cameraModeName() != kRemosaicCameraMode) return false;
    const bool supported = readOtpOnce(sensorId).oisCalibrationValid;
    LSC_LOG_DEBUG("sensorId(%d), IsSupportSeamlessSwitchForRemosaic(%d)", sensorId, supported);
    return supported;
} catch (...) {
    return false;
}

bool TarvoShadingCustomUtil::IsEnabled(int sensorId) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    const TarvoSensorMonitor* const monitor = findMonitor(sensorId);
    return monitor != nullptr && monitor->mEnabled;
} catch (...) {
    return false;
}

void TarvoShadingCustomUtil::QuerySensorInfo(int sensorId, unsigned long command, unsigned long argument1,
                                             unsigned long argument2, unsigned long argument3) noexcept {
    lsc::quietly([&] { sendCommand(sensorId, command, argument1, argument2, argument3); });
}

// ---- OTP calibration --------------------------------------------------------------------------------------------

const OTPState& TarvoShadingCustomUtil::readOtpOnce(int sensorId) {
    const std::lock_guard lock(mOTPState[sensorId].otpMutex);
    if (!mOTPState[sensorId].isRead) ReadOTPInfo(sensorId);
    return mOTPState[sensorId];
}

void TarvoShadingCustomUtil::ReadOTPInfo(int sensorId) noexcept {
    if (!hasOtpSlot(sensorId) || mOTPState[sensorId].isRead) return;
    mOTPState[sensorId].isRead = true;

    OTPInfo& info = mOTPInfo[sensorId];
    std::int32_t driverSensorId = sensorId;
    const bool answered = lsc::quietly(
        [&] { sendCommand(sensorId, NSCam::CMD_GET_OTP_INFO, addressOf(&driverSensorId), addressOf(&info), 0); });
    if (!answered) info = {};  // a driver that throws may have written half a record
    if (info.enable == 0) return;
    logLayout(sensorId, info);

    const std::uint8_t* const otp = otpBytes(sensorId);
    if (otp == nullptr) {
        LSC_LOG_ERROR("Not to stored OTPData !!!");
        return;
    }
    OTPState& state = mOTPState[sensorId];
    const lsc::GoldenBlock golden = lsc::decodeBlock(info.multiGolden, otp);
    state.multi_tbl_idx = golden.tableIndex;
    logBlock(sensorId, info.multiGolden, golden);

    lsc::CalibrationBlock calibration = lsc::decodeBlock(info.oisCalibration, otp);
    state.oisCalibrationTable = std::move(calibration.table);
    state.oisCalibrationValid = calibration.state == lsc::BlockState::kValid;
    logBlock(sensorId, info.oisCalibration, calibration);
}

void TarvoShadingCustomUtil::SwapOTPInfo(unsigned char* source, unsigned char* destination, int sensorId) noexcept {
    if (!isValidSensorId(__func__, sensorId)) return;
    if (source == nullptr || destination == nullptr) {
        LSC_LOG_ERROR("sensorId:%d, source or destination is null !!!", sensorId);
        return;
    }
    const OTPInfo::OisCalibration& layout = mOTPInfo[sensorId].oisCalibration;
    if (lsc::tableBytes(layout) > lsc::kOtpMemorySize) {
        LSC_LOG_ERROR("sensorId:%d, oisCalibration[indexNum:%u, tableNumber:%u] is not within %u bytes!!!", sensorId,
                      layout.indexNum, layout.tableNumber, lsc::kOtpMemorySize);
        return;
    }
    lsc::reorderTable(source, destination, lsc::tableBytes(layout), layout);
}

void TarvoShadingCustomUtil::QueryOTPInfo(int* array, unsigned long length, int sensorId) noexcept try {
    if (!isValidSensorId(__func__, sensorId)) return;
    const OTPState& state = readOtpOnce(sensorId);
    if (!state.oisCalibrationValid || (array == nullptr && length != 0)) return;
    // The platform counts the array's bytes in 32 bits.
    const auto arrayBytes =
        static_cast<std::uint32_t>(std::uint64_t{static_cast<std::uint32_t>(length)} * sizeof *array);
    // Bytes, because the table need not end with an integer.
    auto* const bytes = reinterpret_cast<std::uint8_t*>(array);
    const std::size_t size =
        lsc::copyTable(state.oisCalibrationTable.get(), mOTPInfo[sensorId].oisCalibration, bytes, arrayBytes);
    LSC_LOG_DEBUG("sensorId:%d, array_size:%zu, size:%zu", sensorId, std::size_t{length}, size);
} catch (...) {
    return;
}

void TarvoShadingCustomUtil::GetMultiTableIndex(int& index, int sensorId) noexcept try {
    index = 0;
    if (!isValidSensorId(__func__, sensorId)) return;
    if (mForceMultiTableIndex >= 1) {
        index = mForceMultiTableIndex;
        LSC_LOG_DEBUG("Force prop set multi_tbl_idx:%d", index);
        return;
    }
    index = readOtpOnce(sensorId).multi_tbl_idx;
} catch (...) {
    return;
}

void TarvoShadingCustomUtil::StoreRollingShutter(int sensorId, unsigned int sensorMode) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    TarvoSensorMonitor* const monitor = findMonitor(sensorId);
    if (monitor == nullptr) return;
    std::uint32_t rollingShutter = 0;
    QuerySensorInfo(sensorId, NSCam::CMD_GET_ROLLING_SHUTTER, addressOf(&rollingShutter), 0, addressOf(&sensorMode));
    monitor->mRollingShutter = rollingShutter;
    monitor->mSensorMode = sensorMode;
    LSC_LOG_DEBUG("sensorId:%d, rolling_shutter:%u sensorMode:%u", sensorId, rollingShutter, sensorMode);
} catch (...) {
    return;
}

std::uint32_t TarvoShadingCustomUtil::rollingShutterOf(int sensorId) {
    const std::lock_guard lock(mSensorMonitorMutex);
    const TarvoSensorMonitor* const monitor = findMonitor(sensorId);
    return monitor != nullptr ? monitor->mRollingShutter : 0;
}

unsigned int TarvoShadingCustomUtil::QueryRollingShutter(int sensorId) noexcept try {
    return rollingShutterOf(sensorId);
} catch (...) {
    return 0;
}

// ---- Sample buffer ----------------------------------------------------------------------------------------------

TarvoShadingCustomUtil::TarvoSensorData::TarvoSensorData(std::uint32_t maxQueueSize, std::int32_t logLevel)
    : mLogLevel(logLevel), mQueue(maxQueueSize) {}

void TarvoShadingCustomUtil::TarvoSensorData::pushValue(std::uint32_t frame, lsc::Samples& data) {
    using Fate = lsc::SampleQueue::Fate;
    const std::lock_guard lock(mMutex);
    if (mLogLevel >= kEverySampleLevel) {
        for (std::size_t i = 0; i < data.size(); ++i) {
            LSC_LOG_DEBUG("index:%zu, timestamp:%llu, OIS_X:%f OIS_Y:%f, oisHall_X:%f oisHall_Y:%f", i,
                          llu(data[i].timestamp), wide(data[i].oisX), wide(data[i].oisY), wide(data[i].oisHallX),
                          wide(data[i].oisHallY));
        }
    }
    const auto filing = mQueue.push(frame, data);
    if (filing.fate == Fate::kEmpty || filing.fate == Fate::kDiscarded) return;
    if (filing.dropped && !mDropReported) {
        LSC_LOG_ERROR("more than %zu samples buffered, the oldest are dropped !!!", lsc::kMaxBufferedSamples);
        mDropReported = true;
    }
    if (filing.fate == Fate::kSplit) {
        LSC_LOG_DEBUG_IF(mLogLevel != 0, "split data frameNumber: %d lastData:%zu data:%zu splitTime:%llu", dec(frame),
                         filing.olderSamples, data.size(), llu(filing.splitTime));
    }
    if (data.empty()) return;
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "F:(%u) dataSize:%zu start-end(%llu-%llu)", frame, data.size(),
                     llu(data.front().timestamp), llu(data.back().timestamp));
}

void TarvoShadingCustomUtil::TarvoSensorData::getDataByFrame(std::uint32_t frame, lsc::Samples& out) {
    const std::lock_guard lock(mMutex);
    if (const lsc::Samples* const samples = mQueue.byFrame(frame)) lsc::Samples(*samples).swap(out);
}

void TarvoShadingCustomUtil::TarvoSensorData::getDataByTimestamp(std::uint64_t timestamp, lsc::Samples& out) {
    const std::lock_guard lock(mMutex);
    const std::size_t total = mQueue.sampleCount();
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "total data size:%zu", total);
    const auto match = mQueue.firstNotBefore(timestamp);
    if (!match || total < lsc::kWindowSize) {
        LSC_LOG_ERROR("no data matched !!!");
        return;
    }
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "match data offset:%zu timestamp:%llu", mQueue.offsetOf(*match),
                     llu(match->timestamp()));
    mQueue.around(*match).swap(out);
}

std::size_t TarvoShadingCustomUtil::TarvoSensorData::frameCount() {
    const std::lock_guard lock(mMutex);
    return mQueue.frameCount();
}

void TarvoShadingCustomUtil::TarvoSensorData::clear() {
    const std::lock_guard lock(mMutex);
    mQueue.clear();
    mDropReported = false;
}

// ---- Sensor monitor ---------------------------------------------------------------------------------------------

TarvoShadingCustomUtil::TarvoSensorMonitor::TarvoSensorMonitor(std::int32_t logLevel, std::int32_t sensorId,
                                                               eSensorType sensorType)
    : mLogLevel(logLevel),
      mSensorId(sensorId),
      mSensorType(sensorType),
      mSensorData(lsc::kMaxBufferedFrames, logLevel) {}

TarvoShadingCustomUtil::TarvoSensorMonitor::~TarvoSensorMonitor() {
    disableSensor();
}

bool TarvoShadingCustomUtil::TarvoSensorMonitor::enableSensor() {
    if (!mSensorProvider) {
        char user[sizeof "OIS_MONITOR--2147483648--2147483648"];
        std::snprintf(user, sizeof user, "OIS_MONITOR-%d-%d", mSensorId, dec(mSensorType));
        mSensorProvider = SensorProvider::createInstance(user);
    }
    if (!mSensorProvider || mEnabled) return mEnabled;
    if (mSensorProvider->enableSensor(mSensorType, kProviderInterval)) {
        mSensorData.clear();
        mEnabled = true;
        LSC_LOG_DEBUG("enable sensorType %d success", dec(mSensorType));
    }
    return mEnabled;
}

void TarvoShadingCustomUtil::TarvoSensorMonitor::disableSensor() noexcept {
    if (!mSensorProvider) return;
    lsc::quietly([this] { mSensorProvider->disableSensor(mSensorType); });
    mSensorProvider.reset();
    mEnabled = false;
    lsc::quietly([this] { mSensorData.clear(); });
    LSC_LOG_DEBUG("disable sensorType %d", dec(mSensorType));
}

void TarvoShadingCustomUtil::TarvoSensorMonitor::updateSensorData(std::uint32_t frame, std::uint64_t timestamp) {
    if (!mSensorProvider) return;
    lsc::Samples samples;
    mSensorProvider->getAllSensorData(mSensorType, samples);
    if (samples.empty()) {
        LSC_LOG_ERROR("no sensor data for type %d", dec(mSensorType));
        return;
    }
    mSensorData.pushValue(frame, samples);
    if (mLogLevel == 0) return;
    // A split may leave nothing of the batch.
    const std::int64_t first = samples.empty() ? 0 : samples.front().timestamp;
    const std::int64_t last = samples.empty() ? 0 : samples.back().timestamp;
    LSC_LOG_DEBUG("update sensor data F:(%u) TS:(%llu) size:%zu, queue size:%zu, timestamp interval:%llu - %llu", frame,
                  llu(timestamp), samples.size(), mSensorData.frameCount(), llu(first), llu(last));
}

void TarvoShadingCustomUtil::TarvoSensorMonitor::getSensorData(lsc::Samples& out, std::uint32_t frame,
                                                               std::uint64_t timestamp) {
    if (timestamp != 0) {
        mSensorData.getDataByTimestamp(timestamp, out);
    } else if (frame != 0) {
        mSensorData.getDataByFrame(frame, out);
    } else {
        LSC_LOG_ERROR("timestamp and frameNumber should not both be zero !!!");
    }
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "get sensor data F:(%u) TS:(%llu) data size:%zu", frame, llu(timestamp),
                     out.size());
}

// ---- Registry ---------------------------------------------------------------------------------------------------

TarvoShadingCustomUtil::TarvoSensorMonitor* TarvoShadingCustomUtil::findMonitor(int sensorId) {
    for (const auto& monitor : mSensorMonitors) {
        if (monitor->mSensorId == sensorId) return monitor.get();
    }
    return nullptr;
}

bool TarvoShadingCustomUtil::RegisterAndStartSensorMonitor(int sensorId, unsigned int sensorType) noexcept {
    RegisterSensorMonitor(sensorId, sensorType);
    if (StartSensorMonitor(sensorId)) return true;
    UnRegisterSensorMonitor(sensorId);
    LSC_LOG_DEBUG("Enable Sensor Fail !!!, UnRegisterSensorMonitor");
    return false;
}

bool TarvoShadingCustomUtil::RegisterSensorMonitor(int sensorId, unsigned int sensorType) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    if (const TarvoSensorMonitor* const monitor = findMonitor(sensorId)) {
        LSC_LOG_DEBUG("Sensor Monitor already registered sensorId:%d sensorType:%d", monitor->mSensorId,
                      dec(monitor->mSensorType));
        return true;
    }
    mSensorMonitors.push_back(
        std::make_shared<TarvoSensorMonitor>(mLogLevel, sensorId, static_cast<eSensorType>(sensorType)));
    LSC_LOG_DEBUG("Register Sensor Monitor sensorId:%d sensorType:%d", sensorId, dec(sensorType));
    return true;
} catch (...) {
    return false;
}

bool TarvoShadingCustomUtil::StartSensorMonitor(int sensorId) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    TarvoSensorMonitor* const monitor = findMonitor(sensorId);
    if (monitor == nullptr) {
        LSC_LOG_ERROR("Sensor Monitor not registered sensorId:%d", sensorId);
        return false;
    }
    if (!monitor->enableSensor()) return false;
    LSC_LOG_DEBUG("Enable Sensor Monitor sensorId:%d", sensorId);
    return true;
} catch (...) {
    return false;
}

void TarvoShadingCustomUtil::UnRegisterSensorMonitor(int sensorId) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    const auto found = std::find_if(mSensorMonitors.begin(), mSensorMonitors.end(),
                                    [sensorId](const auto& monitor) { return monitor->mSensorId == sensorId; });
    if (found == mSensorMonitors.end()) return;
    (*found)->disableSensor();
    mSensorMonitors.erase(found);
    LSC_LOG_DEBUG("Stop sensorId:%d, mSensorMonitors.size:%zu", sensorId, mSensorMonitors.size());
} catch (...) {
    return;
}

void TarvoShadingCustomUtil::UpdateSensorData(int sensorId, unsigned int frame, unsigned long timestamp) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    if (TarvoSensorMonitor* const monitor = findMonitor(sensorId)) monitor->updateSensorData(frame, timestamp);
} catch (...) {
    return;
}

void TarvoShadingCustomUtil::QuerySensorData(std::vector<NSCam::Utils::SensorData>& samples, int sensorId,
                                             unsigned int frame, unsigned long timestamp) noexcept try {
    const std::lock_guard lock(mSensorMonitorMutex);
    TarvoSensorMonitor* const monitor = findMonitor(sensorId);
    if (monitor == nullptr) {
        LSC_LOG_ERROR("Sensor Monitor not registered sensorId:%d", sensorId);
        return;
    }
    monitor->getSensorData(samples, frame, timestamp);
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "get sensor data size:%zu", samples.size());
} catch (...) {
    return;
}

// ---- OIS value calculation --------------------------------------------------------------------------------------

namespace {

// Both vectors get their memory before either changes; one that is passed as both takes all four values.
void storePosition(const lsc::LensPosition& position, std::vector<double>& x, std::vector<double>& y) {
    constexpr std::size_t kValues = 2;
    x.reserve(2 * kValues);
    y.reserve(2 * kValues);
    x.clear();
    y.clear();
    x.push_back(wide(position.x));
    y.push_back(wide(position.y));
    x.push_back(0.0);
    y.push_back(0.0);
}

}  // namespace

void TarvoShadingCustomUtil::CalcOISValue(CustShadingType type, const CalcOISValueInput& input, std::vector<double>* x,
                                          std::vector<double>* y, const unsigned int& frame,
                                          const int& sensorId) noexcept try {
    if (x == nullptr || y == nullptr || !IsEnabled(sensorId)) return;
    // One that throws, since 0 would give a position of its own.
    const std::uint32_t shutterUs = rollingShutterOf(sensorId) / lsc::kNsPerUs;
    const bool tracing = mLogLevel >= kTraceLevel;
    // A number from here on: the platform may pass any.
    const auto typeNumber = static_cast<std::uint32_t>(type);

    const auto selected = lsc::selectTimes(type, input, shutterUs);
    if (!selected) LSC_LOG_ERROR("Unknown type %d", dec(typeNumber));
    const lsc::ExposureTimes times = selected.value_or(lsc::ExposureTimes{});

    lsc::Samples samples;
    QuerySensorData(samples, sensorId, kNoFrame, times.sofNs);
    const std::int64_t timeOffset = lsc::sampleTimeOffset(times);
    lsc::logParameters(sensorId, typeNumber, samples.size(), times, timeOffset);
    if (samples.empty()) return;

    if (tracing) lsc::traceSamples(samples);
    const lsc::ActiveSamples active = lsc::activate(samples, timeOffset);
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "activeNum:%d", active.count);
    const lsc::SpanSearch span = lsc::findSpan(active, times);
    if (tracing) lsc::traceSearch(active, times, span);
    LSC_LOG_DEBUG_IF(mLogLevel != 0, "startIndex = %d, endIndex = %d", span.start, span.end);
    if (span.size() <= 1) {
        LSC_LOG_DEBUG_IF(mLogLevel != 0,
                         "Match OIS data fail, transfer the last ois data to tsf. sensorId = %d type = %u, frameId = "
                         "%u, sof_timestamp = %lld, out_frame_ois_size(%zu, %zu)",
                         sensorId, typeNumber, frame, lld(times.startUs), x->size(), y->size());
        return;
    }

    if (tracing && (mOisCalCMode == lsc::kMean || mOisCalCMode == lsc::kLargest)) {
        lsc::traceReduction(active, times, span);
    }
    if (const auto position = lsc::reduceSpan(active, span, mOisCalCMode)) storePosition(*position, *x, *y);
    if (mOisDumpEnable != 0 && lsc::isDumped(type) &&
        !lsc::writeOisHallDump(sensorId, frame, times, active, span, *x, *y)) {
        LSC_LOG_ERROR("sensorId:%d, the OIS hall dump of frame %u is not complete !!!", sensorId, frame);
    }
    lsc::logOutputs(sensorId, frame, mOisCalCMode, *x, *y);
} catch (...) {
    return;
}

// ---- Metadata exchange ------------------------------------------------------------------------------------------

int TarvoShadingCustomUtil::fillLscCalcOISValueInputInfo(NSCam::IMetadata* metadata, CalcOISValueInput& input) noexcept
    try {
    CalcOISValueInput timing;
    const int status = metadata != nullptr ? lsc::readFrameTiming(*metadata, timing) : kNoTiming;
    input = timing;
    LSC_LOG_DEBUG("sof_timestamp:%llu [ne:%llu][se:%llu], exposure_time:%llu [ne:%llu][se:%llu]",
                  llu(timing.sof_timestamp), llu(timing.sof_timestamp_ne), llu(timing.sof_timestamp_se),
                  llu(timing.exposure_time), llu(timing.exposure_time_ne), llu(timing.exposure_time_se));
    return status;
} catch (...) {
    return kNoTiming;
}

void TarvoShadingCustomUtil::fillLscOISCompInfo(int sensorId, NSCam::IMetadata* metadata) noexcept try {
    if (metadata == nullptr || !IsSupportFeature(kFeatureOisCompensation, sensorId)) return;
    const bool multiExposure = lsc::readMultiExposure(*metadata);
    LSC_LOG_DEBUG("is_multiexp_mode:%d", multiExposure);

    const auto exposures = lsc::exposuresOf(multiExposure);
    if (lsc::hasOisValues(*metadata, exposures)) {
        LSC_LOG_DEBUG("oisValue has been written");
        return;
    }
    CalcOISValueInput timing;
    if (fillLscCalcOISValueInputInfo(metadata, timing) != 0) return;
    for (const lsc::FrameExposure& exposure : exposures) {
        std::vector<double> x;
        std::vector<double> y;
        CalcOISValue(exposure.type, timing, &x, &y, kNoFrame, sensorId);
        if (x.empty() || x.size() != y.size()) continue;
        // A platform that throws is no reason to leave out the other exposure.
        if (!lsc::quietly([&] { lsc::writeOisValues(*metadata, exposure, x, y); })) continue;
        LSC_LOG_DEBUG("cust_lsc_type:%d fill OIS value success!!!", dec(exposure.type));
    }
} catch (...) {
    return;
}
