#include "tools/replay/JsonText.h"

#include <charconv>
#include <cmath>
#include <cstddef>

#include <nlohmann/json.hpp>

namespace replay {
namespace {

// Exponents of the leading digit for which numbers are written in fixed notation.
constexpr int kMinFixed = -4;
constexpr int kMaxFixed = 15;

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

template <typename T>
void appendReal(std::string& out, T value) {
    if (std::isnan(value)) {
        out += "\"nan\"";
    } else if (std::isinf(value)) {
        out += value > 0 ? "\"inf\"" : "\"-inf\"";
    } else {
        char text[32];  // the longest double takes 24
        const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
        appendScientific(out, std::string_view(text, end));
    }
}

}  // namespace

void appendNumber(std::string& out, float value) {
    appendReal(out, value);
}
void appendNumber(std::string& out, double value) {
    appendReal(out, value);
}

void appendString(std::string& out, std::string_view text) {
    out += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void appendBytes(std::string& out, std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    out.reserve(out.size() + 2 * bytes.size() + 2);
    out += '"';
    for (const std::uint8_t byte : bytes) {
        out += kDigits[byte >> 4U];
        out += kDigits[byte & 0xFU];
    }
    out += '"';
}

}  // namespace replay
