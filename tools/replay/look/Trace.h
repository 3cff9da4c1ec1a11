// A recording as trace events in JSON, for the trace viewers of browsers and of mobile systems. Pure function of its
// input. docs/workbench.md says what stands in the trace.
#pragma once

#include <ostream>
#include <string>

#include "tools/replay/look/Recording.h"

namespace replay {

// Writes the whole trace; `name` is the session's. A process for each sensor; its events are in order of time,
// those without a time first. Times are
// the session's own, in us with three decimals: every nanosecond survives.
void writeTrace(std::ostream& out, const Recording& recording, const std::string& name);

}  // namespace replay
