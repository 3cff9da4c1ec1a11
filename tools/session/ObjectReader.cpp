#include "tools/session/ObjectReader.h"

#include <fmt/format.h>

namespace replay {

ObjectReader::ObjectReader(const Json& object, const Place& place) : mObject(object), mPlace(place) {
    if (!object.is_object()) failExpected(place, "an object", object);
}

const Json* ObjectReader::find(std::string_view key) {
    mKnown.insert(key);
    const auto field = mObject.find(key);
    return field != mObject.end() ? &*field : nullptr;
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
    for (const auto& item : mObject.items()) {
        if (!mKnown.contains(item.key())) failAt(mPlace, "unknown key " + Json(item.key()).dump());
    }
}

}  // namespace replay
