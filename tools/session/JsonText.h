// JSON as text, by a parser that says what is wrong with a line, and where. It takes its time: lines as a session
// usually holds them are read without it.
#pragma once

#include <string>
#include <string_view>

#include "tools/session/Json.h"

namespace replay {

// The line as a simpler one of the same value: numbers beyond 64 bits as real ones. Throws LineError for text that is
// no JSON value, for a duplicate key, and for nesting deeper than kMaxNesting.
std::string checkedLine(std::string_view line);
// Deeper than any line of the format, which needs 5.
inline constexpr int kMaxNesting = 16;

// The text as a JSON string; bytes that are no UTF-8 become the replacement character.
std::string jsonString(std::string_view text);

// The value in one line without spaces; text from `maxBytes` on may be missing.
std::string shown(const Json& value, std::size_t maxBytes);

}  // namespace replay
