// Takes texts apart that were printed with a known format: a pattern in which each % stands for one value, whose kind
// is that of the argument. Strict where printf is: no spaces, no signs that it would not print, everything in range.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

namespace replay::import {

// A number that was printed with %x.
struct Hex {
    std::uint32_t value = 0;
};

// A number that was printed with %f: its text, which always has six decimals, or inf or nan with or without a sign.
// That makes a text that was cut within the number known as such.
struct Decimal {
    std::string_view text;
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
inline bool takeValue(std::string_view& text, Decimal& value) {
    constexpr std::string_view kDigits = "0123456789";
    constexpr std::size_t kDecimals = 6;
    std::size_t size = text.starts_with('-') ? 1 : 0;
    if (text.substr(size).starts_with("inf") || text.substr(size).starts_with("nan")) {
        size += 3;
    } else {
        const std::size_t first = size;
        size = text.find_first_not_of(kDigits, first);
        if (size == std::string_view::npos || size == first || text[size] != '.') return false;
        const std::size_t decimals = ++size;
        size = text.find_first_not_of(kDigits, decimals);
        if (size == std::string_view::npos) size = text.size();
        if (size - decimals != kDecimals) return false;
    }
    value.text = text.substr(0, size);
    text.remove_prefix(size);
    return true;
}

// Takes `literal` off the front of `text`.
inline bool takeText(std::string_view& text, std::string_view literal) {
    if (!text.starts_with(literal)) return false;
    text.remove_prefix(literal.size());
    return true;
}

// Whether all of `text` is `pattern`, with the values of its % in `values`, one for each. On false the values are
// undefined.
template <typename... Values>
bool scan(std::string_view text, std::string_view pattern, Values&... values) {
    [[maybe_unused]] const auto takePart = [&](auto& value) {
        const std::size_t hole = pattern.find('%');
        if (!takeText(text, pattern.substr(0, hole)) || !takeValue(text, value)) return false;
        pattern.remove_prefix(hole + 1);
        return true;
    };
    return (takePart(values) && ...) && text == pattern;
}

}  // namespace replay::import
