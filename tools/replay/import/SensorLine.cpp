#include "tools/replay/import/SensorLine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "tools/replay/JsonText.h"

namespace replay::import {
namespace {

constexpr std::uint32_t kOtpMemorySize = 64 * 1024;  // bytes; the library looks at none beyond
constexpr OtpLayout kMadeUpLayout = {0, {0, 8, 0, 1, 2}, {16, 40, 8, 4, 5}};

class OtpMemory {
public:
    void set(std::uint32_t offset, std::int32_t value) {
        if (offset >= kOtpMemorySize) return;
        mBytes.resize(std::max<std::size_t>(mBytes.size(), std::size_t{offset} + 1));
        mBytes[offset] = static_cast<std::uint8_t>(value);  // printed as a number, perhaps a signed one
    }
    const std::vector<std::uint8_t>& bytes() const { return mBytes; }

private:
    std::vector<std::uint8_t> mBytes;
};

OtpMemory memoryOf(const OtpLayout& layout, const OtpFacts& facts, bool served) {
    OtpMemory memory;
    const OtpGolden golden = facts.golden.value_or(OtpGolden{});
    memory.set(layout.multiGolden[2], golden.marker);
    if (golden.marker == 1) {
        memory.set(layout.multiGolden[3], std::abs(std::clamp(golden.gradient, -255, 255)));
        memory.set(layout.multiGolden[4], golden.flag);
    }
    const std::int32_t assumed = served ? 1 : 0;
    memory.set(layout.oisCalibration[2], facts.calibration ? facts.calibration->marker : assumed);
    return memory;
}

void appendGroup(std::string& out, std::string_view name, const std::array<std::uint32_t, 5>& words,
                 const std::array<std::string_view, 5>& keys) {
    out.append("\"").append(name).append("\":{");
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i != 0) out += ',';
        out.append("\"").append(keys[i]).append("\":").append(std::to_string(words[i]));
    }
    out += '}';
}

}  // namespace

std::string sensorLine(std::int32_t sensor, const OtpFacts& facts, bool served, const ShutterTimes& times) {
    const OtpLayout layout = facts.layout.value_or(kMadeUpLayout);
    std::string line = "{\"platform\":\"sensor\",\"sensor\":" + std::to_string(sensor) + ",\"otp_layout\":{";
    appendGroup(line, "multiGolden", layout.multiGolden, {"offset", "size", "valid", "gradient", "flag"});
    line += ',';
    appendGroup(line, "oisCalibration", layout.oisCalibration, {"offset", "size", "valid", "indexNum", "tableNumber"});
    line += ",\"enable\":1}";
    if (!facts.absent) {
        line += ",\"otp\":";
        appendBytes(line, memoryOf(layout, facts, served).bytes());
    }
    line += ",\"rolling_shutter\":{";
    std::string_view separator;
    for (const auto& [mode, time] : times) {
        if (time == 0) continue;
        line.append(separator).append("\"").append(std::to_string(mode)).append("\":").append(std::to_string(time));
        separator = ",";
    }
    return line + "}}";
}

}  // namespace replay::import
