#include "tools/session/ResultLine.h"

#include <ranges>
#include <variant>

#include "aaa/aaa/lsc/ShadingCustomUtil.h"

namespace replay {
namespace {

// Of an entry's values, in the order of host::MetadataValues; a memory block is not shown.
constexpr std::string_view kTypeNames[] = {"int32", "int64", "float", "double"};

}  // namespace

ResultLine::ResultLine(std::size_t line, std::string_view call, bool wanted) : mWanted(wanted) {
    if (mWanted) mJson.beginObject().member("line", line).member("call", call);
}

void ResultLine::addSamples(std::string_view key, const std::vector<NSCam::Utils::SensorData>& samples) {
    if (!mWanted) return;
    mJson.key(key).beginList();
    for (const NSCam::Utils::SensorData& sample : samples) {
        mJson.beginList().value(sample.timestamp);
        for (const float value : {sample.oisHallX, sample.oisHallY, sample.oisX, sample.oisY})
            mJson.value(value);
        mJson.endList();
    }
    mJson.endList();
}

void ResultLine::addMetadata(std::string_view key, const NSCam::IMetadata& metadata) {
    if (!mWanted) return;
    mJson.key(key).beginList();
    for (const auto& entry : host::metadataEntries(metadata)) {
        const auto addValues = [&](const auto& list) {
            if constexpr (std::ranges::range<decltype(list)>) {
                mJson.beginObject().member("tag", entry.first);
                mJson.member(kTypeNames[entry.second.index()], list).endObject();
            }
        };
        std::visit(addValues, entry.second);
    }
    mJson.endList();
}

void ResultLine::addTiming(std::string_view key, const CalcOISValueInput& input) {
    if (!mWanted) return;
    mJson.key(key).beginObject();
    mJson.member("sof_timestamp", input.sof_timestamp);
    mJson.member("sof_timestamp_ne", input.sof_timestamp_ne);
    mJson.member("sof_timestamp_se", input.sof_timestamp_se);
    mJson.member("exposure_time", input.exposure_time);
    mJson.member("exposure_time_ne", input.exposure_time_ne);
    mJson.member("exposure_time_se", input.exposure_time_se);
    mJson.endObject();
}

const std::string& ResultLine::finish(const std::vector<host::LogEntry>& log,
                                      const std::optional<std::vector<host::JournalEntry>>& journal) {
    if (!mWanted) return mJson.text();
    mJson.key("log").beginList();
    for (const host::LogEntry& entry : log)
        addLogEntry(entry);
    mJson.endList();
    if (journal) {
        mJson.key("journal").beginList();
        for (const host::JournalEntry& entry : *journal)
            addJournalEntry(entry);
        mJson.endList();
    }
    mJson.endObject();
    return mJson.text();
}

void ResultLine::addJournalEntry(const host::JournalEntry& entry) {
    mJson.beginObject().member("operation", host::nameOf(entry.operation));
    for (const auto& [name, value] : entry.fields) {
        mJson.key(name);
        std::visit([this](const auto& its) { addValue(its); }, value);
    }
    mJson.endObject();
}

void ResultLine::addValue(const host::MetadataValues& values) {
    std::visit([this](const auto& list) { addValue(list); }, values);
}

void ResultLine::addValue(const NSCam::IMetadata::Memory& block) {
    mJson.value(block.size());
}

void ResultLine::addLogEntry(const host::LogEntry& entry) {
    mJson.beginObject();
    switch (entry.output) {
        case host::LogEntry::Output::kAndroid:
            mJson.member("output", "android").member("priority", entry.priority);
            mJson.member("tag", entry.tag).member("text", entry.text);
            break;
        case host::LogEntry::Output::kUnified:
            mJson.member("output", "ulog").member("module", entry.module).member("tag", entry.tag);
            mJson.member("level", entry.priority).member("text", entry.text);
            break;
        case host::LogEntry::Output::kUnifiedAssert:
            mJson.member("output", "ulog_assert").member("value", entry.priority);
            break;
    }
    mJson.endObject();
}

}  // namespace replay
