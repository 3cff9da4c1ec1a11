#include "tools/report/Cost.h"

#include <fmt/format.h>

namespace replay {
namespace {

double microseconds(std::uint64_t ns) {
    return static_cast<double>(ns) / 1000.0;  // a call does not last long enough to lose digits
}

}  // namespace

void Costs::called(std::string_view function, std::uint64_t ns) {
    const auto known = mCalls.find(function);
    Histogram& cost = known != mCalls.end() ? known->second : mCalls[std::string(function)];
    cost.add(ns);
}

void Costs::print(std::ostream& out) const {
    out << fmt::format("{:<36} {:>10} {:>12} {:>12} {:>12}\n", "cost of a call (us)", "calls", "median", "99 %",
                       "worst");
    for (const auto& [call, cost] : mCalls) {
        out << fmt::format("{:<36} {:>10} {:>12.3f} {:>12.3f} {:>12.3f}\n", call, cost.count(),
                           microseconds(cost.quantile(0.5)), microseconds(cost.quantile(0.99)),
                           microseconds(cost.max()));
    }
}

}  // namespace replay
