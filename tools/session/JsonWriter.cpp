#include "tools/session/JsonWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "tools/session/JsonText.h"

namespace replay {
namespace {

// Exponents of the leading digit for which numbers are written in fixed notation.
constexpr int kMinFixed = -4;
constexpr int kMaxFixed = 15;

// Whether a string holds the character as it is.
bool isPlain(char character) {
    return character >= ' ' && character <= '~' && character != '"' && character != '\\';
}

// Writes `digits`, whose first digit stands for 10^exponent, with a point in its place.
void appendFixed(std::string& out, std::string_view digits, int exponent) {
    if (exponent < 0) {  // so that the count of zeros is not negative
        out.append("0.").append(static_cast<std::size_t>(-exponent - 1), '0').append(digits);
        return;
    }
    const auto whole = static_cast<std::size_t>(exponent) + 1;  // digits before the point; not negative here
    if (whole >= digits.size()) {
        out.append(digits).append(whole - digits.size(), '0').append(".0");
    } else {
        out.append(digits.substr(0, whole)).append(".").append(digits.substr(whole));
    }
}

// `text` is a finite number in scientific notation: "-1.25e+03".
void appendScientific(std::string& out, std::string_view text) {
    const std::size_t mark = text.find('e');
    const std::string_view power = text.substr(text[mark + 1] == '+' ? mark + 2 : mark + 1);
    int exponent = 0;
    std::from_chars(power.data(), power.data() + power.size(), exponent);
    if (exponent < kMinFixed || exponent > kMaxFixed) {
        out.append(text);
        return;
    }
    std::string digits;
    for (const char c : text.substr(0, mark)) {
        if (c >= '0' && c <= '9') digits += c;
    }
    if (text.front() == '-') out += '-';
    appendFixed(out, digits, exponent);
}

}  // namespace

// A comma, unless the value is the first of all, the first in its object or list, or stands after its key.
void JsonWriter::separate() {
    constexpr std::string_view kOpen = "{[:";
    if (!mText.empty() && kOpen.find(mText.back()) == std::string_view::npos) mText += ',';
}

JsonWriter& JsonWriter::open(char bracket) {
    separate();
    mText += bracket;
    return *this;
}

JsonWriter& JsonWriter::close(char bracket) {
    mText += bracket;
    return *this;
}

JsonWriter& JsonWriter::key(std::string_view name) {
    separate();
    mText.append("\"").append(name).append("\":");
    return *this;
}

template <typename T>
JsonWriter& JsonWriter::real(T value) {
    if (std::isnan(value)) return verbatim("\"nan\"");
    if (std::isinf(value)) return verbatim(value > 0 ? "\"inf\"" : "\"-inf\"");
    separate();
    char text[32];  // the longest double takes 24
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    appendScientific(mText, std::string_view(text, end));
    return *this;
}

JsonWriter& JsonWriter::value(float value) {
    return real(value);
}
JsonWriter& JsonWriter::value(double value) {
    return real(value);
}

JsonWriter& JsonWriter::value(std::string_view text) {
    if (!std::ranges::all_of(text, isPlain)) return verbatim(jsonString(text));
    separate();
    mText.append("\"").append(text).append("\"");
    return *this;
}

JsonWriter& JsonWriter::bytes(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    separate();
    mText.reserve(mText.size() + 2 * bytes.size() + 2);
    mText += '"';
    for (const std::uint8_t byte : bytes) {
        mText += kDigits[byte >> 4U];
        mText += kDigits[byte & 0xFU];
    }
    mText += '"';
    return *this;
}

JsonWriter& JsonWriter::verbatim(std::string_view text) {
    separate();
    mText += text;
    return *this;
}

}  // namespace replay
