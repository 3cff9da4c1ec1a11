// What is wrong in a session: each finding names a cause, gives the numbers that decided, and says what to do.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/report/Statistics.h"

namespace replay {

struct Finding {
    std::string code;  // lower case, stable; docs/workbench.md lists all
    std::int32_t sensor;
    std::vector<std::pair<std::string, double>> numbers;  // by name; a unit ends the name
    std::string advice;                                   // one sentence
};

// Sensor by sensor in ascending order, causes before symptoms. A symptom that a cause explains is not listed. Empty for
// a healthy session.
std::vector<Finding> findings(const Statistics& statistics);
// Those of one sensor.
std::vector<Finding> findings(std::int32_t id, const SensorStatistics& sensor);

// The advice, after the number of exposures that it would help if there are any.
std::string adviceOf(const Finding& finding);

// Samples a second, from the median period; 0 when it is not known.
double rateHz(const SensorStatistics& sensor);

}  // namespace replay
