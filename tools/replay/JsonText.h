// Exact JSON text for results: numbers in the shortest form that reads back to the same value.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace replay {

template <std::integral T>
void appendNumber(std::string& out, T value) {
    out += std::to_string(value);
}
// Fixed notation from 0.0001 up to below 1e16, always with a point ("2.0"); otherwise scientific ("1.5e-07"). An
// infinity or a NaN becomes the string "inf", "-inf" or "nan". A float is written by the digits that a float needs.
void appendNumber(std::string& out, float value);
void appendNumber(std::string& out, double value);

// A quoted JSON string; bytes that are no UTF-8 become the replacement character.
void appendString(std::string& out, std::string_view text);

// Quoted pairs of lower-case hexadecimal digits.
void appendBytes(std::string& out, std::span<const std::uint8_t> bytes);

}  // namespace replay
