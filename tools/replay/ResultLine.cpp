#include "tools/replay/ResultLine.h"

#include <variant>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"

namespace replay {
namespace {

constexpr std::string_view typeName(const std::vector<std::int32_t>&) {
    return "int32";
}
constexpr std::string_view typeName(const std::vector<std::int64_t>&) {
    return "int64";
}
constexpr std::string_view typeName(const std::vector<float>&) {
    return "float";
}
constexpr std::string_view typeName(const std::vector<double>&) {
    return "double";
}

}  // namespace

ResultLine::ResultLine(std::size_t line, std::string_view call) {
    addNumber("line", line);
    addKey("call");
    appendString(mText, call);
}

// A comma, unless the object or list has just been opened.
void ResultLine::separate(char opening) {
    if (mText.back() != opening) mText += ',';
}

void ResultLine::addKey(std::string_view key) {
    separate('{');
    mText.append("\"").append(key).append("\":");
}

void ResultLine::addFlag(std::string_view key, bool value) {
    addKey(key);
    mText += value ? "true" : "false";
}

void ResultLine::addBytes(std::string_view key, std::span<const std::uint8_t> bytes) {
    addKey(key);
    appendBytes(mText, bytes);
}

void ResultLine::addSamples(std::string_view key, const std::vector<NSCam::Utils::SensorData>& samples) {
    addKey(key);
    mText += '[';
    for (const NSCam::Utils::SensorData& sample : samples) {
        separate('[');
        mText += '[';
        appendNumber(mText, sample.timestamp);
        for (const float value : {sample.oisHallX, sample.oisHallY, sample.oisX, sample.oisY}) {
            mText += ',';
            appendNumber(mText, value);
        }
        mText += ']';
    }
    mText += ']';
}

void ResultLine::addMetadata(std::string_view key, const std::map<std::uint32_t, host::MetadataValues>& entries) {
    addKey(key);
    mText += '[';
    for (const auto& [tag, values] : entries) {
        if (std::holds_alternative<NSCam::IMetadata::Memory>(values)) continue;
        separate('[');
        mText += '{';
        addNumber("tag", tag);
        std::visit(
            [this](const auto& list) {
                if constexpr (requires { typeName(list); }) addList(typeName(list), std::span(list));
            },
            values);
        mText += '}';
    }
    mText += ']';
}

void ResultLine::addTiming(std::string_view key, const CalcOISValueInput& input) {
    addKey(key);
    mText += '{';
    addNumber("sof_timestamp", input.sof_timestamp);
    addNumber("sof_timestamp_ne", input.sof_timestamp_ne);
    addNumber("sof_timestamp_se", input.sof_timestamp_se);
    addNumber("exposure_time", input.exposure_time);
    addNumber("exposure_time_ne", input.exposure_time_ne);
    addNumber("exposure_time_se", input.exposure_time_se);
    mText += '}';
}

const std::string& ResultLine::finish(const std::vector<host::LogEntry>& log) {
    addKey("log");
    mText += '[';
    for (const host::LogEntry& entry : log) {
        separate('[');
        mText += '{';
        appendLogEntry(entry);
        mText += '}';
    }
    mText += "]}";
    return mText;
}

void ResultLine::appendLogEntry(const host::LogEntry& entry) {
    using Output = host::LogEntry::Output;
    addKey("output");
    if (entry.output == Output::kUnifiedAssert) {
        mText += "\"ulog_assert\"";
        addNumber("value", entry.priority);
        return;
    }
    const bool android = entry.output == Output::kAndroid;
    mText += android ? "\"android\"" : "\"ulog\"";
    if (android) {
        addNumber("priority", entry.priority);
    } else {
        addNumber("module", entry.module);
    }
    addKey("tag");
    appendString(mText, entry.tag);
    if (!android) addNumber("level", entry.priority);
    addKey("text");
    appendString(mText, entry.text);
}

}  // namespace replay
