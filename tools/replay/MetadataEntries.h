// The entries of a metadata line.
#pragma once

#include <map>

#include "platform/host/Host.h"
#include "tools/replay/Values.h"

namespace replay {

// Largest memory block in bytes.
inline constexpr std::uint64_t kMaxMemorySize = 1048576;

// The entries by tag. Throws LineError when `list` is not a list of entries or a tag stands twice.
std::map<std::uint32_t, host::MetadataValues> readMetadataEntries(const Json& list, const Place& place);

}  // namespace replay
