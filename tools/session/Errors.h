// What ends a replay early. Each text is one line without the tool's name.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace replay {

// A line that the session format does not allow: what was expected, and what was found.
class LineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The same with its place; what() is "NAME:LINE: text".
class SessionError : public std::runtime_error {
public:
    SessionError(const std::string& name, std::size_t line, const std::string& text)
        : std::runtime_error(name + ":" + std::to_string(line) + ": " + text) {}
    // With a text that has its place.
    explicit SessionError(const std::string& message) : std::runtime_error(message) {}
};

// A stream that cannot be read or written.
class StreamError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace replay
