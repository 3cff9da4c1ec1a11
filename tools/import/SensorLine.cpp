#include "tools/import/SensorLine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"
#include "tools/session/JsonWriter.h"

namespace replay::import {
namespace {

constexpr OtpLayout kMadeUpLayout = {0, {0, 8, 0, 1, 2}, {16, 40, 8, 4, 5}};

class OtpMemory {
public:
    void set(std::uint32_t offset, std::int32_t value) {
        if (offset >= lsc::kOtpMemorySize) return;
        mBytes.resize(std::max<std::size_t>(mBytes.size(), std::size_t{offset} + 1));
        mBytes[offset] = static_cast<std::uint8_t>(value);  // printed as a number, perhaps a signed one
    }
    const std::vector<std::uint8_t>& bytes() const { return mBytes; }

private:
    std::vector<std::uint8_t> mBytes;
};

OtpMemory memoryOf(const OtpLayout& layout, const OtpRead& read) {
    OtpMemory memory;
    const OtpGolden golden = read.golden.value_or(OtpGolden{});
    memory.set(layout.multiGolden[2], golden.marker);
    if (golden.marker == 1) {
        memory.set(layout.multiGolden[3], std::abs(std::clamp(golden.gradient, -255, 255)));
        memory.set(layout.multiGolden[4], golden.flag);
    }
    const std::int32_t assumed = read.calibrationOutside ? 0 : 1;
    memory.set(layout.oisCalibration[2], read.calibration ? read.calibration->marker : assumed);
    return memory;
}

void addGroup(JsonWriter& line, std::string_view name, const std::array<std::uint32_t, 5>& words,
              const std::array<std::string_view, 5>& keys) {
    line.key(name).beginObject();
    for (std::size_t i = 0; i < keys.size(); ++i)
        line.member(keys[i], words[i]);
    line.endObject();
}

}  // namespace

std::string sensorLine(std::int32_t sensor, const OtpRead& read, const ShutterTimes& times) {
    const OtpLayout layout = read.layout.value_or(kMadeUpLayout);
    JsonWriter line;
    line.beginObject().member("platform", "sensor").member("sensor", sensor).key("otp_layout").beginObject();
    addGroup(line, "multiGolden", layout.multiGolden, {"offset", "size", "valid", "gradient", "flag"});
    addGroup(line, "oisCalibration", layout.oisCalibration, {"offset", "size", "valid", "indexNum", "tableNumber"});
    line.member("enable", 1).endObject();
    if (!read.absent) line.key("otp").bytes(memoryOf(layout, read).bytes());
    line.key("rolling_shutter").beginObject();
    for (const auto& [mode, time] : times) {
        if (time != 0) line.member(std::to_string(mode), time);
    }
    return line.endObject().endObject().take();
}

}  // namespace replay::import
