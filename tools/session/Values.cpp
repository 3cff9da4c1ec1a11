#include "tools/session/Values.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include "tools/session/Errors.h"
#include "tools/session/JsonText.h"
#include "tools/session/Narrow.h"

namespace replay {
namespace {

constexpr std::size_t kMaxShown = 60;  // bytes of a value that a message shows

std::string cut(const Json& value) {
    // A byte more than is shown tells that there is more.
    std::string text = shown(value, kMaxShown + 1);
    if (text.size() <= kMaxShown) return text;
    std::size_t end = kMaxShown;
    // Not inside a character of several bytes, which are told by the upper two bits.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return text.substr(0, end) + "...";
}

bool parseDigits(std::string_view digits, int base, std::uint64_t& number) {
    if (digits.empty()) return false;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
    return error == std::errc() && stop == end;
}

bool parseHex(std::string_view text, std::uint64_t& number) {
    return text.starts_with("0x") && parseDigits(text.substr(2), 16, number);
}

// Negative numbers in the first alternative, all others in the second.
using Integer = std::variant<std::int64_t, std::uint64_t>;

std::optional<Integer> integerOf(const Json& value) {
    std::uint64_t number = 0;
    if (value.type() == Json::Type::kUnsigned) return value.unsignedNumber();
    if (value.type() == Json::Type::kNegative) return value.negativeNumber();
    if (value.isText() && parseHex(value.text(), number)) return number;
    return std::nullopt;
}

bool within(const Integer& number, std::int64_t min, std::uint64_t max) {
    if (const auto* negative = std::get_if<std::int64_t>(&number)) return *negative >= min;
    return std::get<std::uint64_t>(number) <= max;
}

bool isText(const Json& value, std::string_view text) {
    return value.isText() && value.text() == text;
}

std::optional<std::vector<std::uint8_t>> parseBytes(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        while (!bytes.empty() && i < text.size() && text[i] == ' ')
            ++i;
        std::uint64_t byte = 0;
        if (i + 1 >= text.size() || !parseDigits(text.substr(i, 2), 16, byte)) return std::nullopt;
        bytes.push_back(narrow<std::uint8_t>(byte));
    }
    return bytes;
}

}  // namespace

std::string Place::text() const {
    if (mParent == nullptr) return {};
    const std::string before = mParent->text();
    if (mKey.empty()) return fmt::format("{}[{}]", before, mIndex);
    return (before.empty() ? before : before + ".") + std::string(mKey);
}

void failAt(const Place& place, const std::string& text) {
    const std::string where = place.text();
    throw LineError(where.empty() ? text : where + ": " + text);
}

void failExpected(const Place& place, const std::string& expected, const Json& value) {
    failAt(place, "expected " + expected + ", got " + cut(value));
}

std::uint64_t integerBits(const Json& value, const Place& place, std::int64_t min, std::uint64_t max) {
    const std::optional<Integer> number = integerOf(value);
    if (!number || !within(*number, min, max)) {
        failExpected(place, fmt::format("an integer from {} to {}", min, max), value);
    }
    // Two's complement is what the caller asked for.
    return std::visit([](auto n) { return static_cast<std::uint64_t>(n); }, *number);
}

bool parseKey(std::string_view key, std::uint64_t max, std::uint64_t& number) {
    return (parseHex(key, number) || parseDigits(key, 10, number)) && number <= max;
}

double toDouble(const Json& value, const Place& place) {
    // Whole numbers are rounded to the nearest.
    if (value.type() == Json::Type::kReal) return value.real();
    if (value.type() == Json::Type::kUnsigned) return static_cast<double>(value.unsignedNumber());
    if (value.type() == Json::Type::kNegative) return static_cast<double>(value.negativeNumber());
    if (isText(value, "inf")) return std::numeric_limits<double>::infinity();
    if (isText(value, "-inf")) return -std::numeric_limits<double>::infinity();
    if (isText(value, "nan")) return std::numeric_limits<double>::quiet_NaN();
    failExpected(place, "a number, \"inf\", \"-inf\" or \"nan\"", value);
}

float toFloat(const Json& value, const Place& place) {
    constexpr double kMax = 0x1.fffffep127;       // the largest float
    constexpr double kRoundsUp = 0x1.ffffffp127;  // half a step above the largest float
    const double number = toDouble(value, place);
    if (!std::isfinite(number) || std::abs(number) <= kMax) return static_cast<float>(number);  // rounds to nearest
    if (std::abs(number) >= kRoundsUp) failExpected(place, "a number within the range of a 32-bit float", value);
    return std::copysign(std::numeric_limits<float>::max(), number < 0 ? -1.0F : 1.0F);
}

bool toFlag(const Json& value, const Place& place) {
    if (!value.isFlag()) failExpected(place, "true or false", value);
    return value.flag();
}

std::string toText(const Json& value, const Place& place) {
    if (!value.isText()) failExpected(place, "a string", value);
    return std::string(value.text());
}

std::vector<std::uint8_t> toBytes(const Json& value, const Place& place) {
    std::optional<std::vector<std::uint8_t>> bytes;
    if (value.isText()) bytes = parseBytes(value.text());
    if (!bytes) failExpected(place, "a string of hexadecimal digit pairs", value);
    return *std::move(bytes);
}

}  // namespace replay
