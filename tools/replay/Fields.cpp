#include "tools/replay/Fields.h"

namespace replay {

Fields::Fields(const Json& object, const Place& place) : mObject(object), mPlace(place) {
    if (!object.is_object()) failExpected(place, "an object", object);
}

const Json* Fields::find(std::string_view key) {
    mKnown.insert(key);
    const auto field = mObject.find(key);
    return field != mObject.end() ? &*field : nullptr;
}

const Json& Fields::get(std::string_view key) {
    const Json* const value = find(key);
    if (value == nullptr) failAt(mPlace, "missing key \"" + std::string(key) + "\"");
    return *value;
}

bool Fields::flag(std::string_view key, bool fallback) {
    const Json* const value = find(key);
    return value != nullptr ? toFlag(*value, at(key)) : fallback;
}

std::vector<std::uint8_t> Fields::bytes(std::string_view key, std::size_t minimum) {
    std::vector<std::uint8_t> bytes = toBytes(get(key), at(key));
    if (bytes.size() < minimum) {
        failAt(at(key), "expected at least " + std::to_string(minimum) + " bytes, got " + std::to_string(bytes.size()));
    }
    return bytes;
}

std::vector<double> Fields::doubles(std::string_view key) {
    const Json* const value = find(key);
    if (value == nullptr) return {};
    return toList(*value, at(key), toDouble);
}

void Fields::finish() const {
    for (const auto& item : mObject.items()) {
        if (!mKnown.contains(item.key())) failAt(mPlace, "unknown key " + Json(item.key()).dump());
    }
}

}  // namespace replay
