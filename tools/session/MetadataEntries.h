// The entries of a metadata line.
#pragma once

#include <map>

#include "platform/host/Host.h"
#include "tools/session/Values.h"

namespace replay {

struct MetadataEntries {
    std::map<std::uint32_t, host::MetadataValues> values;  // by tag
    std::uint64_t size = 0;                                // as kMaxMetadataSize counts
};

// Throws LineError when `list` is not a list of entries, has a duplicate tag, or has a size above `maxSize`.
MetadataEntries readMetadataEntries(const Json& list, const Place& place, std::uint64_t maxSize);

}  // namespace replay
