// A session as a sequence of lines, one at a time in memory: blank lines and comments left out, but for the comments
// that say what a device did (Expectation.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <utility>

namespace replay {

class SessionReader {
public:
    // `input` must outlive the reader; `name` is the session's in messages.
    SessionReader(std::istream& input, std::string name) : mInput(input), mName(std::move(name)) {}

    // Goes to the next line that holds something; false at the end of the session. Throws LineError for a line longer
    // than kMaxLineSize, StreamError when the input cannot be read.
    bool next();

    // The line's text without its end, and its number from 1, until the next call of next().
    const std::string& text() const { return mText; }
    std::size_t number() const { return mNumber; }

    // Bytes read so far.
    std::uint64_t bytes() const { return mBytes; }

private:
    bool readLine();

    std::istream& mInput;
    const std::string mName;
    std::array<char, 16384> mPart;  // of a line; most are shorter
    std::string mText;
    std::size_t mNumber = 0;
    std::uint64_t mBytes = 0;
};

}  // namespace replay
