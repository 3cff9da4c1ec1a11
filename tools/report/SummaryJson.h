// The figures of the summary and the findings as one JSON object. docs/data.md lists its keys.
#pragma once

#include <ostream>

#include "tools/report/Comparison.h"
#include "tools/report/Statistics.h"

namespace replay {

void writeSummaryJson(std::ostream& out, const Statistics& statistics, const Comparison& comparison);

}  // namespace replay
