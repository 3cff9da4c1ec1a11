// A session as one page for a browser: figures, findings, hall traces that can be zoomed, and a table of exposures. The
// page is a single file that loads nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "tools/report/Comparison.h"
#include "tools/report/LensPath.h"
#include "tools/report/Recording.h"
#include "tools/report/Statistics.h"

namespace replay {

// What `lsc_replay accuracy` found. The errors of the sensor's exposures are those against the path.
struct PageAccuracy {
    std::string tables;  // as text
    std::int32_t sensor;
    LensPath path;
};

struct Page {
    std::string name;  // of the session
    const Statistics& statistics;
    const Comparison& comparison;
    const Recording& recording;  // finished
    TimeLimits limits;           // of traces and exposures; figures and findings are of the whole session
    std::optional<PageAccuracy> accuracy = std::nullopt;
};

// What the page shows does not grow beyond bounds with the session: of each sensor the extremes of some ten thousand
// periods of time stand for its samples, and every n-th exposure for very many with the same outcome. The page says so
// where it is.
void writePage(std::ostream& out, const Page& page);

}  // namespace replay
