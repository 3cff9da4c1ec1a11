// The figures of a session for a reader, in all and for each sensor, and what would help the exposures that got no
// position.
#pragma once

#include <ostream>

#include "tools/report/Comparison.h"
#include "tools/report/Statistics.h"

namespace replay {

// The counts of the whole session, then a paragraph for each sensor that has delivered a batch or was asked about.
void printSummary(std::ostream& out, const Statistics& statistics, const Comparison& comparison);

}  // namespace replay
