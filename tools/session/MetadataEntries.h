// The entries of a metadata line.
#pragma once

#include <map>

#include "platform/host/Host.h"
#include "tools/session/Values.h"

namespace replay {

// The entries by tag. Throws LineError when `list` is not a list of entries or has a duplicate tag.
std::map<std::uint32_t, host::MetadataValues> readMetadataEntries(const Json& list, const Place& place);

}  // namespace replay
