// The figures of a session for a reader, in all and for each sensor, and what would help the exposures that got no
// position.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/report/Comparison.h"
#include "tools/report/Statistics.h"

namespace replay {

// A figure as a line of the summary shows it.
struct Figure {
    std::string label;
    std::string text;
};

// The counts of the whole session; labels of parts are indented, numbers are at the right of ten places.
std::vector<Figure> countsOf(const Statistics& statistics, const Comparison& comparison);
std::vector<Figure> figuresOf(const SensorStatistics& sensor);

// The counts of the whole session, then a paragraph for each sensor that has delivered a batch or was asked about.
void printSummary(std::ostream& out, const Statistics& statistics, const Comparison& comparison);

}  // namespace replay
