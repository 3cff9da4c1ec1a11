// The figures of each sensor for a reader, and what would help the exposures that got no position.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/replay/look/Statistics.h"

namespace replay {

// A paragraph for each sensor that has delivered a batch or was asked about.
void printSummary(std::ostream& out, const Statistics& statistics);

// What to do about the exposures without a position, a sentence each; nothing when all is well.
std::vector<std::string> advice(const SensorStatistics& sensor);

}  // namespace replay
