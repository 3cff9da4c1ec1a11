#include "tools/session/MetadataEntries.h"

#include <memory>
#include <utility>

#include <fmt/format.h>

#include "tools/session/JsonText.h"
#include "tools/session/Limits.h"
#include "tools/session/Narrow.h"
#include "tools/session/ObjectReader.h"

namespace replay {
namespace {

using Memory = NSCam::IMetadata::Memory;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t kNumberSize = 8;  // bytes of one number in a memory block

// Numbers of a memory block by ascending offset, so that overlapping ones have one meaning.
std::map<std::uint64_t, std::uint64_t> readNumbers(const Json& numbers, const Place& place, std::uint64_t size) {
    if (!numbers.isObject()) failExpected(place, "an object of offsets and numbers", numbers);
    std::map<std::uint64_t, std::uint64_t> byOffset;
    for (const auto& [key, value] : numbers.members()) {
        std::uint64_t offset = 0;
        if (size < kNumberSize || !parseKey(key, size - kNumberSize, offset)) {
            failAt(place, fmt::format("expected offsets of {}-byte numbers within a block of {} bytes, got {}",
                                      kNumberSize, size, jsonString(key)));
        }
        if (!byOffset.emplace(offset, toInteger<std::uint64_t>(value, place)).second) {
            failAt(place, fmt::format("duplicate offset {}", offset));
        }
    }
    return byOffset;
}

// Counts what the entries of an object take.
class Room {
public:
    explicit Room(std::uint64_t size) : mLeft(size) {}

    void take(std::uint64_t bytes, const Place& place) {
        if (bytes > mLeft) {
            failAt(place, fmt::format("the session's metadata would take more than {} bytes", kMaxMetadataSize));
        }
        mLeft -= bytes;
    }
    std::uint64_t left() const { return mLeft; }

private:
    std::uint64_t mLeft;
};

Bytes readSizedBlock(const Json& value, const Place& place, Room& room) {
    ObjectReader fields(value, place);
    const auto size = integerBits(fields.get("size"), fields.at("size"), 0, kMaxMemorySize);
    room.take(size, place);  // before it takes memory
    Bytes bytes(size);
    if (const Json* const numbers = fields.find("u64")) {
        for (const auto& [offset, number] : readNumbers(*numbers, fields.at("u64"), size)) {
            for (std::uint64_t i = 0; i < kNumberSize; ++i) {
                bytes[offset + i] = narrow<std::uint8_t>(number >> (8 * i) & 0xFFU);  // little-endian
            }
        }
    }
    fields.finish();
    return bytes;
}

Bytes readByteBlock(const Json& value, const Place& place, Room& room) {
    Bytes bytes = toBytes(value, place);
    if (bytes.size() > kMaxMemorySize) {
        failAt(place, fmt::format("expected at most {} bytes, got {}", kMaxMemorySize, bytes.size()));
    }
    room.take(bytes.size(), place);
    return bytes;
}

Memory readMemory(const Json& value, const Place& place, Room& room) {
    Bytes bytes = value.isText() ? readByteBlock(value, place, room) : readSizedBlock(value, place, room);
    return Memory(std::make_shared<const Bytes>(std::move(bytes)));
}

template <typename T>
std::vector<T> readNumberList(const Json& list, const Place& place, Room& room,
                              T (*element)(const Json&, const Place&)) {
    std::vector<T> numbers = toList(list, place, element);
    room.take(numbers.size() * sizeof(T), place);
    return numbers;
}

host::MetadataValues readValues(ObjectReader& entry, const Place& place, Room& room) {
    if (const Json* v = entry.find("int32"))
        return readNumberList(*v, entry.at("int32"), room, toInteger<std::int32_t>);
    if (const Json* v = entry.find("int64"))
        return readNumberList(*v, entry.at("int64"), room, toInteger<std::int64_t>);
    if (const Json* v = entry.find("float")) return readNumberList(*v, entry.at("float"), room, toFloat);
    if (const Json* v = entry.find("double")) return readNumberList(*v, entry.at("double"), room, toDouble);
    if (const Json* v = entry.find("memory")) return readMemory(*v, entry.at("memory"), room);
    failAt(place, "expected one of \"int32\", \"int64\", \"float\", \"double\" or \"memory\"");
}

}  // namespace

MetadataEntries readMetadataEntries(const Json& list, const Place& place, std::uint64_t maxSize) {
    MetadataEntries entries;
    Room room(maxSize);
    room.take(kEntrySize, place);
    toList(list, place, [&](const Json& value, const Place& at) {
        ObjectReader entry(value, at);
        const auto tag = entry.integer<std::uint32_t>("tag");
        if (entries.values.contains(tag)) failAt(at, fmt::format("duplicate tag {}", tag));
        room.take(kEntrySize, at);
        entries.values.emplace(tag, readValues(entry, at, room));
        entry.finish();
        return tag;
    });
    entries.size = maxSize - room.left();
    return entries;
}

}  // namespace replay
