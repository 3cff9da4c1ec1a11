// Strict reading of one JSON object of a session: which keys there are is part of the format. Each reader marks its
// key as known; finish() refuses whatever was not read. A key without a default must stand in the object.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/session/Values.h"

namespace replay {

class ObjectReader {
public:
    // `object` and `place` must outlive the reader. Throws LineError for anything but an object.
    ObjectReader(const Json& object, const Place& place);

    bool has(std::string_view key) const { return mObject.find(key) != nullptr; }
    // The value under `key`, or null when there is none.
    const Json* find(std::string_view key);
    // The value under `key`; LineError when there is none.
    const Json& get(std::string_view key);
    Place at(std::string_view key) const { return mPlace.at(key); }

    template <typename T>
    T integer(std::string_view key) {
        return toInteger<T>(get(key), at(key));
    }
    template <typename T>
    T integer(std::string_view key, T fallback) {
        const Json* const value = find(key);
        return value != nullptr ? toInteger<T>(*value, at(key)) : fallback;
    }
    template <typename T>
    T bits32(std::string_view key) {
        return toBits32<T>(get(key), at(key));
    }
    // A field that is 0 when left out.
    template <typename T>
    T bits32OrZero(std::string_view key) {
        const Json* const value = find(key);
        return value != nullptr ? toBits32<T>(*value, at(key)) : T();
    }
    bool flag(std::string_view key) { return toFlag(get(key), at(key)); }
    bool flag(std::string_view key, bool fallback);
    std::string text(std::string_view key) { return toText(get(key), at(key)); }
    // At least `minimum` bytes.
    std::vector<std::uint8_t> bytes(std::string_view key, std::size_t minimum);
    // Empty when left out.
    std::vector<double> doubles(std::string_view key);

    // Throws LineError when the object holds a key that was not read.
    void finish() const;

private:
    const Json& mObject;
    const Place& mPlace;
    std::bitset<64> mRead;  // members by their place; no object of the format has as many
};

}  // namespace replay
