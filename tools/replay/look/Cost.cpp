#include "tools/replay/look/Cost.h"

#include <cstdio>

namespace replay {
namespace {

double microseconds(std::uint64_t ns) {
    return static_cast<double>(ns) / 1000.0;
}

}  // namespace

void Costs::print(std::ostream& out) const {
    char line[128];
    std::snprintf(line, sizeof line, "%-36s %10s %12s %12s %12s\n", "cost of a call (us)", "calls", "median", "99 %",
                  "worst");
    out << line;
    for (const auto& [call, cost] : mCalls) {
        std::snprintf(line, sizeof line, "%-36s %10llu %12.3f %12.3f %12.3f\n", call.c_str(),
                      static_cast<unsigned long long>(cost.count()),  // what %llu takes
                      microseconds(cost.quantile(0.5)), microseconds(cost.quantile(0.99)), microseconds(cost.max()));
        out << line;
    }
}

}  // namespace replay
