#include "tools/import/LineSplitter.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace replay::import {
namespace {

constexpr std::uint32_t kSupplementary = 0xFFFF + 1;  // the first code that takes two units
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kMarks[] = {kUtf8Mark, "\xFF\xFE", "\xFE\xFF"};

void appendUtf8(std::string& out, std::uint32_t code) {
    const auto tail = [&out](std::uint32_t bits) { out += static_cast<char>(0x80 | (bits & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        tail(code);
    } else if (code <= 0xFFFF) {
        out += static_cast<char>(0xE0 | (code >> 12));
        tail(code >> 6);
        tail(code);
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        tail(code >> 12);
        tail(code >> 6);
        tail(code);
    }
}

// ASCII in UTF-16, cut before or after a line's end: every other byte is zero.
bool isWide(std::string_view line) {
    if (line.size() < 2) return line.starts_with('\0');
    bool zero = line[0] == '\0';
    return std::ranges::all_of(line, [&](char c) { return (c == '\0') == std::exchange(zero, !zero); });
}

}  // namespace

void LineSplitter::detect(std::string_view& bytes) {
    mBegin.append(bytes);
    bytes = mBegin;
    if (bytes.size() < kUtf8Mark.size()) {
        bytes = {};  // wait for more
        return;
    }
    mEncoding = Encoding::kUtf8;
    if (bytes.starts_with("\xFF\xFE")) mEncoding = Encoding::kUtf16Little;
    if (bytes.starts_with("\xFE\xFF")) mEncoding = Encoding::kUtf16Big;
    if (mEncoding != Encoding::kUtf8) {
        bytes.remove_prefix(2);
    } else if (bytes.starts_with(kUtf8Mark)) {
        bytes.remove_prefix(kUtf8Mark.size());
    }
}

// The units in mBegin.
void LineSplitter::decode() {
    const bool little = mEncoding == Encoding::kUtf16Little;
    for (std::size_t i = 0; i + 1 < mBegin.size(); i += 2) {
        const auto first = static_cast<std::uint8_t>(mBegin[i]);
        const auto second = static_cast<std::uint8_t>(mBegin[i + 1]);
        const std::uint32_t unit = little ? first | std::uint32_t{second} << 8 : second | std::uint32_t{first} << 8;
        mLineBegins = unit == '\n';
        if (unit >= 0xD800 && unit < 0xDC00) {
            mHigh = unit;
        } else if (unit >= 0xDC00 && unit < 0xE000) {
            if (mHigh != 0) appendUtf8(mDecoded, kSupplementary + ((mHigh - 0xD800) << 10) + (unit - 0xDC00));
            mHigh = 0;
        } else {
            appendUtf8(mDecoded, unit);
        }
    }
    mBegin.clear();
}

// Whether a line of UTF-16 begins like one of UTF-8: without a zero byte, which every character of ASCII has.
bool LineSplitter::mayBeNarrow() const {
    const std::string_view text = std::string_view(mBegin).substr(mBegin.starts_with(kUtf8Mark[0]) ? 2 : 0);
    return mLineBegins && std::ranges::all_of(text, [](char c) { return (c >= ' ' && c <= '~') || c == kUtf8Mark[2]; });
}

void LineSplitter::addWide(std::string_view bytes) {
    constexpr std::size_t kTold = 24;  // bytes; no text of another script looks so for so long
    mDecoded.clear();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        mBegin += bytes[i];
        if (mBegin.size() % 2 != 0 || (mBegin.size() < kTold && mayBeNarrow())) continue;
        if (mBegin.size() >= kTold && mayBeNarrow()) {
            mEncoding = Encoding::kUtf8;
            split(mDecoded);
            split(std::exchange(mBegin, {}));
            return split(bytes.substr(i + 1));
        }
        decode();
    }
    split(mDecoded);
}

void LineSplitter::add(std::string_view bytes) {
    std::string first;
    if (mEncoding == Encoding::kUnknown) {
        detect(bytes);
        if (mEncoding == Encoding::kUnknown) return;
        first = bytes;  // out of the way of what is kept there next
        mBegin.clear();
        bytes = first;
    }
    mEncoding == Encoding::kUtf8 ? split(bytes) : addWide(bytes);
}

void LineSplitter::split(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos) return keep(text);
        if (mLine.empty()) {
            give(text.substr(0, end));
        } else {
            keep(text.substr(0, end));
            give(mLine);
            mLine.clear();
        }
        text.remove_prefix(end + 1);
    }
}

void LineSplitter::keep(std::string_view part) {
    mLine.append(part.substr(0, kMaxLine - std::min(kMaxLine, mLine.size())));
}

void LineSplitter::give(std::string_view line) {
    line = line.substr(0, kMaxLine);
    for (const std::string_view mark : kMarks) {
        if (line.starts_with(mark)) line.remove_prefix(mark.size());
    }
    if (isWide(line)) {
        mNarrow = line;
        std::erase(mNarrow, '\0');
        line = mNarrow;
    }
    while (line.ends_with('\r'))
        line.remove_suffix(1);
    mSink(line);
}

void LineSplitter::finish() {
    mDecoded.clear();
    if (mEncoding != Encoding::kUnknown) decode();
    split(mEncoding == Encoding::kUnknown ? mBegin : mDecoded);
    mBegin.clear();
    mLineBegins = true;
    mEncoding = Encoding::kUnknown;
    mHigh = 0;
    if (!mLine.empty()) give(mLine);
    mLine.clear();
}

}  // namespace replay::import
