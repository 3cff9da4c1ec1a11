// Parses the lines of a session, one at a time, in memory that is used again for the next.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string>

#include "tools/session/Json.h"

namespace replay {

class LineParser {
public:
    LineParser();
    ~LineParser();
    LineParser(const LineParser&) = delete;
    LineParser& operator=(const LineParser&) = delete;

    // The value of the line; it holds until the next call. A line with room for more characters is not copied. Throws
    // LineError for text that is no JSON value, for a duplicate key, and for nesting deeper than any line of the format
    // needs.
    const Json& parse(const std::string& line);

private:
    struct Parser;
    class Builder;

    bool tryParse(const std::string& line);

    std::unique_ptr<Parser> mParser;
    std::array<std::byte, 16384> mFirst;  // enough for most lines
    std::pmr::monotonic_buffer_resource mMemory{mFirst.data(), mFirst.size()};
    Json mValue;
};

}  // namespace replay
