#include "tools/import/SessionText.h"

#include <algorithm>
#include <bit>

#include <fmt/format.h>

#include "customer/aaa/aaa/lsc/OisMetadata.h"
#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/session/JsonWriter.h"

namespace replay::import {
namespace {

constexpr std::int32_t kEverySampleLevel = 4;  // of the customer log
// One of those that mark a multi-exposure frame.
constexpr std::int32_t kMultiExposureFlag = lsc::kMultiExposureFlags & -lsc::kMultiExposureFlags;

constexpr std::string_view kLost =
    "# A log does not hold, and this session does without:\n"
    "#   samples: what they carry beside the four numbers, and digits beyond the sixth decimal\n"
    "#   metadata: all but exposure mode and timing; the mode's flags are 0 or 8\n"
    "#   OTP memory: all but layout, markers and gradient; the calibration table is all zeros\n"
    "#   calls that log nothing, hooks and colour sensor calls; the camera mode; device ids\n"
    "#   frame numbers of hand-overs without samples: one more than the one before\n"
    "#   the platform's threads: calls stand in the order in which they reached the monitors\n";

std::string propertyLine(std::string_view key, std::int32_t value) {
    JsonWriter line;
    line.beginObject().member("platform", "property").member("key", key).member("value", value).endObject();
    return line.take() + "\n";
}

// Begins an entry of metadata; its value follows, and endObject().
JsonWriter& beginEntry(JsonWriter& line, std::uint32_t tag) {
    return line.beginObject().member("tag", fmt::format("0x{:X}", tag));
}

JsonWriter metadataHead(const std::string& name, bool multi) {
    JsonWriter line;
    line.beginObject().member("metadata", name).key("entries").beginList();
    beginEntry(line, lsc::MULTIEXP_MODE_FLAGS_TAG).key("int32").beginList();
    line.value(multi ? kMultiExposureFlag : 0).endList().endObject();
    return line;
}

// Time stamps of metadata are signed; those of messages were printed as unsigned numbers.
std::int64_t signedTime(std::uint64_t ns) {
    return std::bit_cast<std::int64_t>(ns);
}

}  // namespace

std::string callLine(std::string_view function, std::int32_t sensor,
                     std::initializer_list<std::pair<std::string_view, std::string>> arguments) {
    JsonWriter line;
    line.beginObject().member("call", function).member("sensor", sensor);
    for (const auto& [key, value] : arguments)
        line.key(key).verbatim(value);
    return line.endObject().take();
}

std::string frameMetadata(const std::string& name, bool multi, const Timing& timing, bool hasStart, bool hasExposure) {
    JsonWriter line = metadataHead(name, multi);
    if (hasStart) {
        beginEntry(line, lsc::SOF_TIMESTAMP_TAG).key("int64").beginList().value(signedTime(timing.sof));
        line.endList().endObject();
    }
    if (timing.sofNe != 0 || timing.sofSe != 0) {
        beginEntry(line, lsc::MULTIEXP_SOF_TIMESTAMPS_TAG).key("int64").beginList();
        line.value(lsc::kNeExposureKey).value(signedTime(timing.sofNe));
        line.value(lsc::kSeExposureKey).value(signedTime(timing.sofSe)).endList().endObject();
    }
    if (hasExposure) {
        beginEntry(line, lsc::EXPOSURE_INFO_BLOCK_TAG).key("memory").beginObject();
        line.member("size", lsc::kExposureBlockSize).key("u64").beginObject();
        line.member(std::to_string(lsc::kExposureOffset), timing.exposure);
        if (timing.exposureSe != 0) line.member(std::to_string(lsc::kSeExposureOffset), timing.exposureSe);
        line.endObject().endObject().endObject();
    }
    return line.endList().endObject().take();
}

std::string writtenMetadata(const std::string& name, bool multi) {
    JsonWriter line = metadataHead(name, multi);
    for (const lsc::FrameExposure& exposure : lsc::exposuresOf(multi)) {
        for (const std::uint32_t tag : {exposure.xTag, exposure.yTag})
            beginEntry(line, tag).key("double").beginList().value(0).value(0).endList().endObject();
    }
    return line.endList().endObject().take();
}

std::uint64_t startOf(const Exposure& exposure) {
    const Calculation& c = *exposure.calculation;
    // Within the calculation times are whole microseconds; its query alone needs the rest.
    if (exposure.query && exposure.query->answered) return exposure.query->answered->timestamp;
    return (c.startUs + c.exposureUs) * lsc::kNsPerUs;
}

std::string calculationLine(std::int32_t sensor, const Exposure& exposure) {
    const Calculation& c = *exposure.calculation;
    std::string suffix;
    if (c.type == 5) suffix = "_ne";
    if (c.type == 6 || c.type == 4) suffix = "_se";
    JsonWriter input;
    input.beginObject().member("sof_timestamp" + suffix, startOf(exposure));
    input.member("exposure_time" + suffix, c.exposureUs * lsc::kNsPerUs).endObject();
    return callLine(
        "CalcOISValue", sensor,
        {{"type", std::to_string(c.type)}, {"input", input.take()}, {"frame", std::to_string(exposure.frame)}});
}

std::string samplesLine(std::int32_t type, const lsc::Samples& samples) {
    JsonWriter line;
    line.beginObject().member("samples", type).key("data").beginList();
    for (const NSCam::Utils::SensorData& sample : samples) {
        line.beginList().value(sample.timestamp).value(sample.oisHallX).value(sample.oisHallY);
        line.value(sample.oisX).value(sample.oisY).endList();
    }
    return line.endList().endObject().take();
}

std::string inComment(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r'; }, '?');
    return text;
}

std::string countOf(std::size_t count, std::string_view what) {
    return std::to_string(count).append(" ").append(what).append(count == 1 ? "" : "s");
}

std::string callsMissing(std::size_t count, std::string_view where) {
    return (count == 1 ? "the call for " : "the calls for ") + countOf(count, "frame").append(" ").append(where) +
           (count == 1 ? " is missing, or was not made" : " are missing, or were not made");
}

std::string sessionHead(const std::string& name, const Settings& settings) {
    std::string head = "# Made from the log " + inComment(name) + "\n";
    head += kLost;
    if (!settings.everySample) head += "# No samples of hand-overs are in the log.\n";
    head += "{\"platform\":\"log\",\"mode\":1,\"details_level\":5,\"details_mask\":\"0x821000\"}\n";
    if (settings.everySample) head += propertyLine("vendor.tarvo.3a.lscutil.log", kEverySampleLevel);
    if (settings.calculationMode != 0) {
        head += propertyLine("vendor.debug.ois.hall.calculation", settings.calculationMode);
    }
    if (settings.forcedIndex != 0) head += propertyLine("vendor.debug.lsc_mgr.otp_tbl_idx", settings.forcedIndex);
    return head;
}

}  // namespace replay::import
