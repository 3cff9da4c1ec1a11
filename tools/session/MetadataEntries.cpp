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

Bytes readSizedBlock(const Json& value, const Place& place) {
    ObjectReader fields(value, place);
    const auto size = integerBits(fields.get("size"), fields.at("size"), 0, kMaxMemorySize);
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

Memory readMemory(const Json& value, const Place& place) {
    Bytes bytes = value.isText() ? toBytes(value, place) : readSizedBlock(value, place);
    if (bytes.size() > kMaxMemorySize) {
        failAt(place, fmt::format("expected at most {} bytes, got {}", kMaxMemorySize, bytes.size()));
    }
    return Memory(std::make_shared<const Bytes>(std::move(bytes)));
}

host::MetadataValues readValues(ObjectReader& entry, const Place& place) {
    if (const Json* v = entry.find("int32")) return toList(*v, entry.at("int32"), toInteger<std::int32_t>);
    if (const Json* v = entry.find("int64")) return toList(*v, entry.at("int64"), toInteger<std::int64_t>);
    if (const Json* v = entry.find("float")) return toList(*v, entry.at("float"), toFloat);
    if (const Json* v = entry.find("double")) return toList(*v, entry.at("double"), toDouble);
    if (const Json* v = entry.find("memory")) return readMemory(*v, entry.at("memory"));
    failAt(place, "expected one of \"int32\", \"int64\", \"float\", \"double\" or \"memory\"");
}

}  // namespace

std::map<std::uint32_t, host::MetadataValues> readMetadataEntries(const Json& list, const Place& place) {
    std::map<std::uint32_t, host::MetadataValues> entries;
    toList(list, place, [&entries](const Json& value, const Place& at) {
        ObjectReader entry(value, at);
        const auto tag = entry.integer<std::uint32_t>("tag");
        if (entries.contains(tag)) failAt(at, fmt::format("duplicate tag {}", tag));
        entries.emplace(tag, readValues(entry, at));
        entry.finish();
        return tag;
    });
    return entries;
}

}  // namespace replay
