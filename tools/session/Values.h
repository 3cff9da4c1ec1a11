// Strict reading of single values of the session format. Every function throws LineError, naming the place, what was
// expected and what stood there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tools/session/Json.h"

namespace replay {

// Where in a line a value stands, for messages. A chain through the enclosing values, which must outlive it, so that
// reading a number costs no text.
class Place {
public:
    Place() = default;  // the line itself
    Place at(std::string_view key) const { return Place(*this, key, 0); }
    Place at(std::size_t index) const { return Place(*this, {}, index); }

    // For example "data[3][0]"; empty for the line itself.
    std::string text() const;

private:
    Place(const Place& parent, std::string_view key, std::size_t index) : mParent(&parent), mKey(key), mIndex(index) {}

    const Place* mParent = nullptr;
    std::string_view mKey;  // empty for an element of a list
    std::size_t mIndex = 0;
};

// Throws the LineError "PLACE: TEXT".
[[noreturn]] void failAt(const Place& place, const std::string& text);
// Throws the LineError "PLACE: expected EXPECTED, got VALUE"; a long value is cut.
[[noreturn]] void failExpected(const Place& place, const std::string& expected, const Json& value);

// An integer from `min` to `max`, as the 64 bits of its two's complement.
std::uint64_t integerBits(const Json& value, const Place& place, std::int64_t min, std::uint64_t max);

// An integer within the range of T.
template <typename T>
T toInteger(const Json& value, const Place& place) {
    static_assert(std::is_integral_v<T> && !std::is_same_v<T, bool>);
    using Limits = std::numeric_limits<T>;
    // The bits are those of a number that T holds.
    return static_cast<T>(integerBits(value, place, Limits::min(), static_cast<std::uint64_t>(Limits::max())));
}

// Any 32-bit number, signed or unsigned, as the 32-bit integer or enumeration T.
template <typename T>
T toBits32(const Json& value, const Place& place) {
    static_assert(sizeof(T) == sizeof(std::uint32_t));
    using Signed = std::numeric_limits<std::int32_t>;
    using Unsigned = std::numeric_limits<std::uint32_t>;
    // The low half holds all of a 32-bit number; what it counts as is the field's business.
    return static_cast<T>(static_cast<std::uint32_t>(integerBits(value, place, Signed::min(), Unsigned::max())));
}

// A whole number written as text, in decimal digits or as "0x…", as the keys of an object are.
bool parseKey(std::string_view key, std::uint64_t max, std::uint64_t& number);

float toFloat(const Json& value, const Place& place);
double toDouble(const Json& value, const Place& place);
bool toFlag(const Json& value, const Place& place);
std::string toText(const Json& value, const Place& place);
// Pairs of hexadecimal digits, with or without spaces between the pairs.
std::vector<std::uint8_t> toBytes(const Json& value, const Place& place);

// A list, each element read by `element(value, place)`.
template <typename Element>
auto toList(const Json& value, const Place& place, Element element) {
    if (!value.isList()) failExpected(place, "a list", value);
    std::vector<decltype(element(value, place))> list;
    list.reserve(value.list().size());
    for (const Json& its : value.list())
        list.push_back(element(its, place.at(list.size())));
    return list;
}

}  // namespace replay
