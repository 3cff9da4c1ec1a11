#include "tools/import/LineSplitter.h"

#include <algorithm>
#include <cstdint>

namespace replay::import {
namespace {

constexpr std::uint32_t kSupplementary = 0xFFFF + 1;  // the first code that takes two units
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

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

std::string_view LineSplitter::decoded(std::string_view bytes) {
    mDecoded.clear();
    const bool little = mEncoding == Encoding::kUtf16Little;
    for (const char byte : bytes) {
        mBegin += byte;
        if (mBegin.size() < 2) continue;
        const auto first = static_cast<std::uint8_t>(mBegin[0]);
        const auto second = static_cast<std::uint8_t>(mBegin[1]);
        mBegin.clear();
        const std::uint32_t unit = little ? first | std::uint32_t{second} << 8 : second | std::uint32_t{first} << 8;
        if (unit >= 0xD800 && unit < 0xDC00) {
            mHigh = unit;
        } else if (unit >= 0xDC00 && unit < 0xE000) {
            if (mHigh != 0) appendUtf8(mDecoded, kSupplementary + ((mHigh - 0xD800) << 10) + (unit - 0xDC00));
            mHigh = 0;
        } else {
            appendUtf8(mDecoded, unit);
        }
    }
    return mDecoded;
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
    split(mEncoding == Encoding::kUtf8 ? bytes : decoded(bytes));
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
    while (line.ends_with('\r'))
        line.remove_suffix(1);
    mSink(line);
}

void LineSplitter::finish() {
    if (mEncoding == Encoding::kUnknown) split(mBegin);
    mBegin.clear();
    mEncoding = Encoding::kUnknown;
    mHigh = 0;
    if (!mLine.empty()) give(mLine);
    mLine.clear();
}

}  // namespace replay::import
