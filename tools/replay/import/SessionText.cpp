#include "tools/replay/import/SessionText.h"

#include <algorithm>

namespace replay::import {
namespace {

using std::to_string;

constexpr std::uint64_t kNsPerUs = 1000;
constexpr std::int32_t kEverySampleLevel = 4;  // of the customer log
constexpr int kMultiExposureFlag = 8;          // one of those that mark a multi-exposure frame

constexpr std::string_view kLost =
    "# A log does not hold, and this session does without:\n"
    "#   samples: what they carry beside the four numbers, and digits beyond the sixth decimal\n"
    "#   metadata: all but exposure mode and timing; the mode's flags are 0 or 8\n"
    "#   OTP memory: all but layout, markers and gradient; the calibration table is all zeros\n"
    "#   calls that log nothing, hooks and colour sensor calls; the camera mode; device ids\n"
    "#   frame numbers of hand-overs without samples: one more than the one before\n"
    "#   the platform's threads: calls stand in the order in which they reached the monitors\n";

std::string propertyLine(std::string_view key, std::int32_t value) {
    return std::string("{\"platform\":\"property\",\"key\":\"")
        .append(key)
        .append("\",\"value\":")
        .append(to_string(value))
        .append("}\n");
}

std::string metadataHead(std::string_view name, bool multi) {
    std::string line = "{\"metadata\":\"";
    return line.append(name)
        .append("\",\"entries\":[{\"tag\":\"0xC00A0002\",\"int32\":[")
        .append(to_string(multi ? kMultiExposureFlag : 0))
        .append("]}");
}

// Time stamps of metadata are signed; those of messages were printed as unsigned numbers.
std::string signedTime(std::uint64_t ns) {
    return to_string(static_cast<std::int64_t>(ns));
}

void appendComments(std::string& out, std::string_view title, const std::vector<std::string>& texts) {
    if (texts.empty()) return;
    out.append("# ").append(title).append("\n");
    for (const std::string& text : texts)
        out.append("#   ").append(text).append("\n");
}

}  // namespace

std::string callLine(std::string_view function, std::int32_t sensor,
                     std::initializer_list<std::pair<std::string_view, std::string>> arguments) {
    std::string line = "{\"call\":\"";
    line.append(function).append("\",\"sensor\":").append(to_string(sensor));
    for (const auto& [key, value] : arguments)
        line.append(",\"").append(key).append("\":").append(value);
    return line + "}";
}

std::string frameMetadata(std::string_view name, bool multi, const Timing& timing, bool hasStart, bool hasExposure) {
    std::string line = metadataHead(name, multi);
    if (hasStart) line += ",{\"tag\":\"0xC0010017\",\"int64\":[" + signedTime(timing.sof) + "]}";
    if (timing.sofNe != 0 || timing.sofSe != 0) {
        line += ",{\"tag\":\"0xC00A0006\",\"int64\":[4," + signedTime(timing.sofNe) + ",6," + signedTime(timing.sofSe) +
                "]}";
    }
    if (hasExposure) {
        line += ",{\"tag\":\"0xC0030000\",\"memory\":{\"size\":4712,\"u64\":{\"4592\":" + to_string(timing.exposure);
        if (timing.exposureSe != 0) line += ",\"4704\":" + to_string(timing.exposureSe);
        line += "}}}";
    }
    return line + "]}";
}

std::string writtenMetadata(std::string_view name, bool multi) {
    std::string line = metadataHead(name, multi);
    for (int tag = multi ? 5 : 3, last = multi ? 8 : 4; tag <= last; ++tag)
        line += ",{\"tag\":\"0xC003003" + to_string(tag) + "\",\"double\":[0,0]}";
    return line + "]}";
}

std::string calculationLine(std::int32_t sensor, const ExposureCall& exposure) {
    const Calculation& c = exposure.calculation;
    std::string_view suffix;
    if (c.type == 5) suffix = "_ne";
    if (c.type == 6 || c.type == 4) suffix = "_se";
    // Within the calculation times are whole microseconds; its query alone needs the rest.
    const std::uint64_t start = exposure.timestamp.value_or((c.startUs + c.exposureUs) * kNsPerUs);
    std::string input = "{\"sof_timestamp";
    input.append(suffix).append("\":").append(to_string(start)).append(",\"exposure_time").append(suffix);
    input.append("\":").append(to_string(c.exposureUs * kNsPerUs)).append("}");
    // A frame id is unsigned and was printed as a signed number.
    const auto frame = static_cast<std::uint32_t>(exposure.frame);
    return callLine("CalcOISValue", sensor,
                    {{"type", to_string(c.type)}, {"input", input}, {"frame", to_string(frame)}});
}

std::string inComment(std::string name) {
    std::ranges::replace_if(
        name, [](char c) { return c == '\n' || c == '\r'; }, '?');
    return name;
}

std::string sessionHead(const Capture& capture, const std::string& name, const std::vector<std::string>& assumptions,
                        const std::vector<std::string>& holes) {
    std::string head =
        "# Made from the log " + inComment(name) + ": " + to_string(capture.ownLines) + " messages of the library";
    if (capture.doubledLines != 0) head += ", " + to_string(capture.doubledLines) + " of them doubled";
    if (capture.otherProcesses != 0) {
        head += "; " + to_string(capture.otherProcesses) + " of another process left out";
    }
    head.append("\n").append(kLost);
    appendComments(head, "Assumed:", assumptions);
    if (!capture.everySample) head += "# No samples: the log was not made with customer log level 4.\n";
    appendComments(head, "Holes, by line of the log:", holes);
    head += "{\"platform\":\"log\",\"mode\":1,\"details_level\":5,\"details_mask\":\"0x821000\"}\n";
    if (capture.everySample) head += propertyLine("vendor.tarvo.3a.lscutil.log", kEverySampleLevel);
    if (capture.calculationMode.value_or(0) != 0) {
        head += propertyLine("vendor.debug.ois.hall.calculation", *capture.calculationMode);
    }
    if (capture.forcedIndex) head += propertyLine("vendor.debug.lsc_mgr.otp_tbl_idx", *capture.forcedIndex);
    return head;
}

}  // namespace replay::import
