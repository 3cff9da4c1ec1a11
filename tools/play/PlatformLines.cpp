#include "tools/play/PlatformLines.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"
#include "platform/host/Host.h"
#include "tools/play/PlayState.h"
#include "tools/session/JsonText.h"
#include "tools/session/MetadataEntries.h"
#include "tools/session/Narrow.h"

namespace replay {
namespace {

using NSCam::Utils::eSensorType;
using NSCam::Utils::SensorData;

Setting readProperty(ObjectReader& line) {
    return [key = line.text("key"), value = line.integer<std::int32_t>("value")](PlayState&) {
        host::setProperty(key, value);
    };
}

Setting readLog(ObjectReader& line) {
    const LogSwitches switches{line.bits32OrZero<std::int32_t>("mode"), line.integer<std::uint32_t>("details_level", 0),
                               line.bits32OrZero<std::uint32_t>("details_mask")};
    return [switches](PlayState& state) { state.subject().setLogSwitches(switches); };
}

// Reads the words that `keys` name from the group `group`; words and a group that are left out are 0.
template <std::size_t kCount>
void readLayoutGroup(ObjectReader& layout, std::string_view group, const std::array<std::string_view, kCount>& keys,
                     std::uint32_t* words) {
    const Json* const value = layout.find(group);
    if (value == nullptr) return;
    const Place place = layout.at(group);
    ObjectReader fields(*value, place);
    for (const std::string_view key : keys)
        *words++ = fields.integer<std::uint32_t>(key, 0);
    fields.finish();
}

std::array<std::uint32_t, 11> readOtpLayout(const Json& value, const Place& place) {
    constexpr std::array<std::string_view, 5> kGolden{"offset", "size", "valid", "gradient", "flag"};
    constexpr std::array<std::string_view, 5> kCalibration{"offset", "size", "valid", "indexNum", "tableNumber"};
    std::array<std::uint32_t, 11> words{};
    ObjectReader layout(value, place);
    readLayoutGroup(layout, "multiGolden", kGolden, words.data());
    readLayoutGroup(layout, "oisCalibration", kCalibration, words.data() + kGolden.size());
    words.back() = layout.integer<std::uint32_t>("enable", 0);
    layout.finish();
    return words;
}

std::map<std::uint32_t, std::uint32_t> readRollingShutter(const Json& value, const Place& place) {
    constexpr auto kMaxMode = std::numeric_limits<std::uint32_t>::max();
    if (!value.isObject()) failExpected(place, "an object of sensor modes and times", value);
    std::map<std::uint32_t, std::uint32_t> times;
    for (const auto& [key, its] : value.members()) {
        std::uint64_t mode = 0;
        if (!parseKey(key, kMaxMode, mode)) {
            failAt(place, fmt::format("expected sensor modes from 0 to {}, got {}", kMaxMode, jsonString(key)));
        }
        const auto time = toInteger<std::uint32_t>(its, place);
        if (!times.emplace(narrow<std::uint32_t>(mode), time).second) {
            failAt(place, fmt::format("duplicate mode {}", mode));
        }
    }
    return times;
}

Setting readSensor(ObjectReader& line) {
    const auto id = line.integer<std::int32_t>("sensor");
    host::Sensor sensor;
    sensor.deviceId = line.integer<std::uint32_t>("device", 0);
    sensor.openable = line.flag("openable", true);
    if (const Json* v = line.find("otp_layout")) sensor.otpLayout = readOtpLayout(*v, line.at("otp_layout"));
    if (const Json* v = line.find("otp")) {
        sensor.otp = toBytes(*v, line.at("otp"));
        // A layout may name any byte of the largest memory that the library reads.
        sensor.otp->resize(std::max<std::size_t>(sensor.otp->size(), lsc::kOtpMemorySize));
    }
    if (const Json* v = line.find("rolling_shutter")) {
        sensor.rollingShutter = readRollingShutter(*v, line.at("rolling_shutter"));
    }
    return [id, sensor = std::move(sensor)](PlayState&) { host::setSensor(id, sensor); };
}

Setting readSensorList(ObjectReader& line) {
    return [present = line.flag("present")](PlayState&) { host::setSensorListPresent(present); };
}

Setting readCameraMode(ObjectReader& line) {
    return [name = line.text("name")](PlayState&) { host::setCameraMode(name); };
}

Setting readProvider(ObjectReader& line) {
    if (line.has("create")) {
        return [creates = line.flag("create")](PlayState&) { host::setProviderCreates(creates); };
    }
    return [type = line.bits32<eSensorType>("type"), enables = line.flag("enable")](PlayState&) {
        host::setProviderEnables(type, enables);
    };
}

Setting readCustomerData(ObjectReader& line) {
    return [present = line.flag("present", true), metadata = line.flag("metadata", true)](PlayState&) {
        host::setCustomerDataPresent(present, metadata);
    };
}

Setting readOtpProvider(ObjectReader& line) {
    const bool present = line.flag("present", true);
    const bool bytes = line.flag("bytes", true);
    return [present, bytes, stored = line.integer<std::uint8_t>("stored", 1)](PlayState&) {
        host::setOtpProviderPresent(present);
        host::setOtpBytesNull(!bytes);
        host::setOtpStoredFlag(stored);
    };
}

Setting readMetadataAccess(ObjectReader& line) {
    const auto tag = line.integer<std::uint32_t>("tag");
    const host::Failures::Access access{line.integer<std::int32_t>("read", 0), line.integer<std::int32_t>("write", 0)};
    return [tag, access](PlayState& state) {
        auto& failing = state.subject().failures().access;
        if (access.read != 0 || access.write != 0) {
            failing[tag] = access;
        } else {
            failing.erase(tag);
        }
    };
}

Setting readBurst(ObjectReader& line) {
    constexpr std::uint64_t kMaxRuns = 16;
    const auto runs = integerBits(line.get("runs"), line.at("runs"), 0, kMaxRuns);
    return [runs](PlayState& state) { state.subject().failures().burstRuns = narrow<int>(runs); };
}

host::Operation toOperation(const std::string& name, const Place& place) {
    for (int i = 0; i < static_cast<int>(host::Operation::kCount); ++i) {
        const auto operation = static_cast<host::Operation>(i);  // the operations count from 0
        if (host::nameOf(operation) == name) return operation;
    }
    failAt(place, "unknown operation " + jsonString(name));
}

Setting readOperation(ObjectReader& line) {
    const host::Operation operation = toOperation(line.text("name"), line.at("name"));
    return [operation, throws = line.flag("throws")](PlayState& state) {
        auto& throwing = state.subject().failures().throwing;
        throws ? void(throwing.insert(operation)) : void(throwing.erase(operation));
    };
}

Setting readJournal(ObjectReader& line) {
    return [on = line.flag("on")](PlayState& state) { state.setJournal(on); };
}

Setting readPlatform(ObjectReader& line) {
    const std::string kind = line.text("platform");
    if (kind == "property") return readProperty(line);
    if (kind == "log") return readLog(line);
    if (kind == "sensor") return readSensor(line);
    if (kind == "sensor_list") return readSensorList(line);
    if (kind == "camera_mode") return readCameraMode(line);
    if (kind == "customer_data") return readCustomerData(line);
    if (kind == "provider") return readProvider(line);
    if (kind == "otp_provider") return readOtpProvider(line);
    if (kind == "metadata_access") return readMetadataAccess(line);
    if (kind == "burst") return readBurst(line);
    if (kind == "operation") return readOperation(line);
    if (kind == "journal") return readJournal(line);
    failAt(line.at("platform"), "unknown kind " + jsonString(kind));
}

SensorData readSample(const Json& value, const Place& place) {
    constexpr std::size_t kColumns = 5;
    if (!value.isList() || value.list().size() != kColumns) {
        failExpected(place, "[timestamp, oisHallX, oisHallY, oisX, oisY]", value);
    }
    const std::span<const Json> columns = value.list();
    SensorData sample{};
    sample.timestamp = toInteger<std::int64_t>(columns[0], place.at(0));
    sample.oisHallX = toFloat(columns[1], place.at(1));
    sample.oisHallY = toFloat(columns[2], place.at(2));
    sample.oisX = toFloat(columns[3], place.at(3));
    sample.oisY = toFloat(columns[4], place.at(4));
    return sample;
}

Setting readSamples(ObjectReader& line) {
    const auto type = line.bits32<eSensorType>("samples");
    return [type, samples = toList(line.get("data"), line.at("data"), readSample)](PlayState&) {
        host::deliverSamples(type, samples);
    };
}

Setting readMetadata(ObjectReader& line, const PlayState& session) {
    const std::string name = line.text("metadata");
    MetadataEntries entries = readMetadataEntries(line.get("entries"), line.at("entries"), session.metadataRoom(name));
    return [name, entries = std::move(entries)](PlayState& state) {
        auto metadata = std::make_unique<NSCam::IMetadata>();
        for (const auto& [tag, values] : entries.values)
            host::setMetadataEntry(*metadata, tag, values);
        state.putMetadata(name, std::move(metadata), entries.size);
    };
}

}  // namespace

Setting readSetting(ObjectReader& line, const PlayState& session) {
    if (line.has("platform")) return readPlatform(line);
    if (line.has("samples")) return readSamples(line);
    if (line.has("metadata")) return readMetadata(line, session);
    failAt(Place(), "expected one of the keys \"platform\", \"samples\", \"metadata\" or \"call\"");
}

}  // namespace replay
