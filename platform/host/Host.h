// The host platform: an implementation of every declaration under platform/ for a workstation, in memory, set up by the
// caller. Through this header tools and tests set what the platform answers, deliver samples, receive what was logged
// and make operations fail. Every function may be called from any thread; state is process-wide.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "platform/Metadata.h"
#include "platform/SensorProvider.h"

namespace host {

// Puts everything below back to its initial state: no properties, log switches 0, no sink, no sensors, a sensor list,
// an empty camera mode, providers that are created and enabled, no samples held, no listener, no hook,
// no faults.
// Provider instances and metadata objects that callers hold stay valid; OTP bytes that were handed out do not.
void reset();

// ---- Properties ----------------------------------------------------------------------------------------------------

void setProperty(const std::string& key, std::int32_t value);

// ---- Log -----------------------------------------------------------------------------------------------------------

// One thing that reached an output.
struct LogEntry {
    enum class Output { kAndroid, kUnified, kUnifiedAssert };
    Output output;
    int priority;          // kAndroid: priority; kUnified: level; kUnifiedAssert: the value
    std::uint32_t module;  // kUnified only
    std::string tag;       // kAndroid and kUnified
    std::string text;      // kAndroid: whole, however long; kUnified: up to `length` bytes or the terminating zero
    std::int32_t length;   // kUnified: the length as handed over
};

// Receives every entry, on the thread that logged it, one at a time. It may throw: the unified logger passes that on,
// the Android log drops the entry. It must not log nor set a sink. Null drops everything. A sink that was replaced is
// idle once setLogSink returns.
using LogSink = std::function<void(const LogEntry&)>;
void setLogSink(LogSink sink);

// The unified logger's switches sMode, sDetailsLevel and sNormalDetailsMask.
void setLogSwitches(std::int32_t mode, std::uint32_t detailsLevel, std::uint32_t detailsMask);

// ---- Sensors and their OTP memory ----------------------------------------------------------------------------------

// What a camera module and its driver say.
struct Sensor {
    std::uint32_t deviceId = 0;
    bool openable = true;  // false: the sensor list gives no sensor object
    // The eleven 32-bit words that the driver answers to the OTP layout command in the memory behind the
    // second argument, in record order; without them it leaves that memory as it is.
    std::optional<std::array<std::uint32_t, 11>> otpLayout;
    // The module's OTP bytes; without them the OTP provider holds none. The provider hands over a memory of exactly
    // these bytes, so that a sanitizer sees a read beyond them.
    std::optional<std::vector<std::uint8_t>> otp;
    // Answer in ns to the rolling-shutter command for each sensor mode: the mode is read behind the third
    // argument, the time written behind the first. A mode that is missing leaves that memory as it is.
    std::map<std::uint32_t, std::uint32_t> rollingShutter;
};

// Replaces earlier settings of the sensor. OTP bytes that were handed out stay valid until the next reset().
void setSensor(int sensorId, Sensor sensor);

// Whether IHalSensorList::get() gives a list.
void setSensorListPresent(bool present);

// Sensor objects made and released so far, and whether every release named the user it was created for. A release that
// was made to fail is a call and no more.
struct SensorObjectCounts {
    std::size_t created = 0;
    std::size_t released = 0;
    std::size_t releaseCalls = 0;
    bool usersMatch = true;
};
SensorObjectCounts sensorObjectCounts();

// Whether TarvoOTPData::getInstance() gives a provider, and whether a stored flag comes with a null pointer.
void setOtpProviderPresent(bool present);
void setOtpBytesNull(bool null);
// The stored flag that comes with the bytes; 1 until set.
void setOtpStoredFlag(std::uint8_t flag);

// ---- Camera mode ---------------------------------------------------------------------------------------------------

void setCameraMode(const std::string& name);
// Whether CustomerData::getInstance(), and the CustomMetadata it holds, exist.
void setCustomerDataPresent(bool holder, bool metadata);

// ---- Sensor provider -----------------------------------------------------------------------------------------------

// Whether SensorProvider::createInstance gives an instance.
void setProviderCreates(bool creates);
// Whether enabling this sensor type succeeds; true until set.
void setProviderEnables(NSCam::Utils::eSensorType type, bool enables);
// Appends to what the provider holds for a type. The next getAllSensorData of any instance for the type hands over all
// of it, in this order, whether or not the type is enabled, and then nothing is held.
void deliverSamples(NSCam::Utils::eSensorType type, const std::vector<NSCam::Utils::SensorData>& samples);

// Hears of every getAllSensorData, with the samples handed over: none when nothing was held. Called on the thread that
// fetches, without any lock of the host, before the operation returns; what it throws leaves the operation, and the
// samples are gone. It may call the host, but must not fetch samples. Null removes it. A call under way on another
// thread may still run the listener that was replaced.
using HandOverListener =
    std::function<void(NSCam::Utils::eSensorType type, const std::vector<NSCam::Utils::SensorData>& samples)>;
void setHandOverListener(HandOverListener listener);

// ---- Metadata ------------------------------------------------------------------------------------------------------

using MetadataValues = std::variant<std::vector<std::int32_t>, std::vector<std::int64_t>, std::vector<float>,
                                    std::vector<double>, NSCam::IMetadata::Memory>;

// Replaces the entry under `tag`.
void setMetadataEntry(NSCam::IMetadata& metadata, std::uint32_t tag, MetadataValues values);
// A copy of all entries, by ascending tag.
std::map<std::uint32_t, MetadataValues> metadataEntries(const NSCam::IMetadata& metadata);
// Status of a read that finds no fitting entry.
inline constexpr int kMetadataReadFailed = -1;

// ---- Watching and failing ------------------------------------------------------------------------------------------

// Every platform operation that the library can call, except the Android log.
enum class Operation {
    kPropertyGet,
    kULogWrite,
    kULogAssert,
    kSensorListGet,
    kSensorDeviceId,
    kCreateSensor,
    kSensorCommand,
    kSensorCommandDone,  // the end of a command: what the hook throws here leaves it after its answer was written
    kReleaseSensor,
    kCreateProvider,
    kEnableSensor,
    kDisableSensor,
    kGetAllSensorData,
    kBurstRead,
    kBurstWrite,
    kReadEntry,  // this and the next two inside a burst
    kReadEntries,
    kWriteEntries,
    kCustomerData,
    kCustomMetadata,
    kCameraModeName,
    kOtpInstance,
    kGetOtpData,
    kCount
};

// Called at the start of every operation, on the thread that runs it and without any lock of the host held (but the
// metadata object's own, during a burst); it may count, block, or throw, and what it throws leaves the operation, which
// then has done nothing. Null removes it. A call under way on another thread may still run the hook that was replaced.
using Hook = std::function<void(Operation)>;
void setHook(Hook hook);

// What goes wrong. The default is a platform at which nothing does.
struct Failures {
    // The statuses that every access to a tag ends with, on any object; other than 0, it does nothing else.
    struct Access {
        int read = 0;
        int write = 0;
    };

    std::set<Operation> throwing = {};  // each throws instead of doing anything, after the hook
    std::map<std::uint32_t, Access> access = {};
    int burstRuns = 1;  // how often a burst runs its callback; a conforming platform always runs it once

    bool any() const { return !throwing.empty() || !access.empty() || burstRuns != 1; }
};
// Replaces all earlier ones.
void setFailures(const Failures& failures);

}  // namespace host
