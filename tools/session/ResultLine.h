// The result of one call as one line of JSON: line, call, the outputs in the order they are added, log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Metadata.h"
#include "platform/SensorProvider.h"
#include "platform/host/Host.h"
#include "platform/host/Journal.h"
#include "tools/session/JsonWriter.h"

struct CalcOISValueInput;

namespace replay {

class ResultLine {
public:
    // One that is not wanted stays empty, and costs nothing.
    ResultLine(std::size_t line, std::string_view call, bool wanted);

    // A flag, a number or a list of numbers.
    template <typename T>
    void add(std::string_view key, const T& value) {
        if (mWanted) mJson.member(key, value);
    }
    void addBytes(std::string_view key, std::span<const std::uint8_t> bytes) {
        if (mWanted) mJson.key(key).bytes(bytes);
    }
    // Rows of timestamp, oisHallX, oisHallY, oisX, oisY.
    void addSamples(std::string_view key, const std::vector<NSCam::Utils::SensorData>& samples);
    // All entries but memory blocks, by ascending tag.
    void addMetadata(std::string_view key, const NSCam::IMetadata& metadata);
    void addTiming(std::string_view key, const CalcOISValueInput& input);

    // Adds what the call sent out, and what it asked of the platform if that was recorded, and ends the line; nothing
    // may be added afterwards. The text has no line end.
    const std::string& finish(const std::vector<host::LogEntry>& log,
                              const std::optional<std::vector<host::JournalEntry>>& journal);

private:
    void addLogEntry(const host::LogEntry& entry);
    void addJournalEntry(const host::JournalEntry& entry);
    void addValue(const host::MetadataValues& values);
    void addValue(const NSCam::IMetadata::Memory& block);
    template <typename T>
    void addValue(const T& value) {
        mJson.value(value);
    }

    const bool mWanted;
    JsonWriter mJson;
};

}  // namespace replay
