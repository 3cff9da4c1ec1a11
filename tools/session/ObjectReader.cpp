#include "tools/session/ObjectReader.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>

#include "tools/session/JsonText.h"

namespace replay {

ObjectReader::ObjectReader(const Json& object, const Place& place) : mObject(object), mPlace(place) {
    if (!object.isObject()) failExpected(place, "an object", object);
}

bool ObjectReader::isKnown(std::string_view key) const {
    const auto known = std::span(mKnown).first(mKnownCount);
    return std::ranges::find(known, key) != known.end();
}

const Json* ObjectReader::find(std::string_view key) {
    if (!isKnown(key)) mKnown.at(mKnownCount++) = key;
    return mObject.find(key);
}

const Json& ObjectReader::get(std::string_view key) {
    const Json* const value = find(key);
    if (value == nullptr) failAt(mPlace, "missing key \"" + std::string(key) + "\"");
    return *value;
}

bool ObjectReader::flag(std::string_view key, bool fallback) {
    const Json* const value = find(key);
    return value != nullptr ? toFlag(*value, at(key)) : fallback;
}

std::vector<std::uint8_t> ObjectReader::bytes(std::string_view key, std::size_t minimum) {
    std::vector<std::uint8_t> bytes = toBytes(get(key), at(key));
    if (bytes.size() < minimum) {
        failAt(at(key), fmt::format("expected at least {} bytes, got {}", minimum, bytes.size()));
    }
    return bytes;
}

std::vector<double> ObjectReader::doubles(std::string_view key) {
    const Json* const value = find(key);
    if (value == nullptr) return {};
    return toList(*value, at(key), toDouble);
}

void ObjectReader::finish() const {
    for (const JsonMember& member : mObject.members()) {
        if (!isKnown(member.key)) failAt(mPlace, "unknown key " + jsonString(member.key));
    }
}

}  // namespace replay
