// The lines that set up the platform: "platform", "samples" and "metadata". They call the host layer, never the
// library.
#pragma once

#include <functional>

#include "tools/session/ObjectReader.h"

namespace replay {

class PlayState;

// What a line does, once all of it has been read.
using Setting = std::function<void(PlayState&)>;

// Reads a line that is no call. Throws LineError; the caller checks that no key is left over.
Setting readSetting(ObjectReader& line, const PlayState& session);

}  // namespace replay
