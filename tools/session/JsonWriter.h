// Exact JSON text, built up value by value: for results, traces and sessions. Commas set themselves. Numbers are
// written in the shortest form that reads back to the same value.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace replay {

class JsonWriter {
public:
    JsonWriter& beginObject() { return open('{'); }
    JsonWriter& endObject() { return close('}'); }
    JsonWriter& beginList() { return open('['); }
    JsonWriter& endList() { return close(']'); }

    // The next value is that of `name`, which must need no escapes.
    JsonWriter& key(std::string_view name);

    JsonWriter& value(bool value) { return verbatim(value ? "true" : "false"); }
    JsonWriter& value(std::nullptr_t) { return verbatim("null"); }
    template <std::integral T>
    JsonWriter& value(T value) {
        return verbatim(std::to_string(value));
    }
    // Fixed notation from 0.0001 up to below 1e16, always with a point ("2.0"); otherwise scientific ("1.5e-07"). An
    // infinity or a NaN becomes the string "inf", "-inf" or "nan". A float is written by the digits that a float needs.
    JsonWriter& value(float value);
    JsonWriter& value(double value);
    // A string; bytes that are no UTF-8 become the replacement character.
    JsonWriter& value(std::string_view text);
    JsonWriter& value(const std::string& text) { return value(std::string_view(text)); }
    JsonWriter& value(const char* text) { return value(std::string_view(text)); }
    // A list of any of these.
    template <std::ranges::input_range List>
    requires(!std::convertible_to<const List&, std::string_view>) JsonWriter& value(const List& list) {
        beginList();
        for (const auto& element : list)
            value(element);
        return endList();
    }
    // A string of lower-case hexadecimal digit pairs.
    JsonWriter& bytes(std::span<const std::uint8_t> bytes);
    // JSON text as it stands, for example a number whose digits are known: one value, or several with their commas.
    JsonWriter& verbatim(std::string_view text);

    template <typename T>
    JsonWriter& member(std::string_view name, const T& its) {
        return key(name).value(its);
    }

    // What was written since the last take().
    const std::string& text() const { return mText; }
    std::string take() { return std::exchange(mText, {}); }

private:
    JsonWriter& open(char bracket);
    JsonWriter& close(char bracket);
    void separate();
    template <typename T>
    JsonWriter& real(T value);

    std::string mText;
};

}  // namespace replay
