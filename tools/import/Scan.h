// Reads texts that were printed with a known format: literals and values in turn. Strict where printf is: no spaces, no
// signs that it would not print, everything in range.
#pragma once

#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

namespace replay::import {

// A number that was printed with %x.
struct Hex {
    std::uint32_t value = 0;
};

// A single-precision number that was printed with %f: always six decimals, or inf or nan with or without a sign. That
// makes a text that was cut within the number known as such.
struct Decimal {
    std::string_view text;
    double value = 0;
};

// Each takes one value off the front of `text`; false when there is none.
template <std::integral T>
bool takeValue(std::string_view& text, T& value, int base = 10) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));  // from_chars ends within the text
    return true;
}
inline bool takeValue(std::string_view& text, Hex& value) {
    return takeValue(text, value.value, 16);
}

namespace detail {

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The number's value; `digits` is how many its text has, without the point. False beyond single precision.
inline bool setValue(Decimal& value, std::uint64_t mantissa, std::size_t digits, bool negative) {
    constexpr std::size_t kExactDigits = 15;  // of a double
    constexpr double kScale = 1e6;
    if (digits <= kExactDigits) {
        value.value = static_cast<double>(mantissa) / kScale;  // exact, so that the quotient is the nearest double
        if (negative) value.value = -value.value;
        return true;
    }
    // Not std::from_chars, which not every C++ library has for these. A number that a double cannot hold is infinite.
    value.value = std::strtod(std::string(value.text).c_str(), nullptr);
    return std::abs(value.value) <= static_cast<double>(std::numeric_limits<float>::max());
}

inline bool takeSpecial(std::string_view& text, std::size_t sign, Decimal& value) {
    const std::string_view name = text.substr(sign, 3);
    if (name != "inf" && name != "nan") return false;
    value.text = text.substr(0, sign + name.size());
    value.value = name == "inf" ? std::numeric_limits<double>::infinity() : std::numeric_limits<double>::quiet_NaN();
    if (sign != 0 && name == "inf") value.value = -value.value;
    text.remove_prefix(value.text.size());
    return true;
}

}  // namespace detail

inline bool takeValue(std::string_view& text, Decimal& value) {
    constexpr std::size_t kDecimals = 6;
    const std::size_t sign = text.starts_with('-') ? 1 : 0;
    std::size_t i = sign;
    std::uint64_t mantissa = 0;  // wraps for long numbers, which do not use it
    for (; i < text.size() && detail::isDigit(text[i]); ++i)
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(text[i] - '0');
    if (i == sign) return detail::takeSpecial(text, sign, value);
    if (i == text.size() || text[i] != '.') return false;
    const std::size_t end = i + 1 + kDecimals;
    if (end > text.size() || (end < text.size() && detail::isDigit(text[end]))) return false;
    for (++i; i < end; ++i) {
        if (!detail::isDigit(text[i])) return false;
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(text[i] - '0');
    }
    value.text = text.substr(0, end);
    text.remove_prefix(end);
    return detail::setValue(value, mantissa, end - sign - 1, sign != 0);
}

// Takes `literal` off the front of `text`.
inline bool takeText(std::string_view& text, std::string_view literal) {
    if (!text.starts_with(literal)) return false;
    text.remove_prefix(literal.size());
    return true;
}

namespace detail {

template <std::size_t N>
bool takePart(std::string_view& text, const char (&literal)[N]) {
    return takeText(text, std::string_view(literal, N - 1));
}
template <typename T>
bool takePart(std::string_view& text, T& value) {
    return takeValue(text, value);
}

}  // namespace detail

// Whether all of `text` is made of `parts`: literals, and variables for the values between them. On false the variables
// are undefined.
template <typename... Parts>
bool scan(std::string_view text, Parts&... parts) {
    return (detail::takePart(text, parts) && ...) && text.empty();
}

}  // namespace replay::import
