// The figures of the summary and the findings as one JSON object. docs/data.md lists its keys.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/report/Accuracy.h"
#include "tools/report/Comparison.h"
#include "tools/report/Statistics.h"

namespace replay {

// How far a sensor's positions are from where the lens was.
struct AccuracySummary {
    std::int32_t sensor = 0;
    std::string path;                  // compared with
    std::vector<Accuracy> modes;       // of each calculation mode, from 0 on
    std::optional<Accuracy> weighted;  // of the samples weighted over each exposure
};

void writeSummaryJson(std::ostream& out, const Statistics& statistics, const Comparison& comparison,
                      const std::optional<AccuracySummary>& accuracy = std::nullopt);

}  // namespace replay
