#include "tools/session/ObjectReader.h"

#include <fmt/format.h>

#include "tools/session/JsonText.h"

namespace replay {

ObjectReader::ObjectReader(const Json& object, const Place& place) : mObject(object), mPlace(place) {
    if (!object.isObject()) failExpected(place, "an object", object);
}

const Json* ObjectReader::find(std::string_view key) {
    const JsonMember* const member = mObject.find(key);
    if (member == nullptr) return nullptr;
    const auto place = static_cast<std::size_t>(member - mObject.members().data());  // not before the first
    if (place < mRead.size()) mRead.set(place);
    return &member->value;
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
    std::size_t place = 0;
    for (const JsonMember& member : mObject.members()) {
        if (place >= mRead.size() || !mRead[place]) failAt(mPlace, "unknown key " + jsonString(member.key));
        ++place;
    }
}

}  // namespace replay
