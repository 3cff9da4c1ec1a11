// What the calls into the library cost.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <string_view>

#include "tools/diagnose/Observer.h"
#include "tools/report/Histogram.h"

namespace replay {

class Costs : public Observer {
public:
    bool wantsDiagnosis() const override { return false; }
    void called(std::string_view function, std::uint64_t ns) override;

    // A table with a row for each function that was called: how often, median, 99th percentile, worst, in us.
    void print(std::ostream& out) const;

private:
    std::map<std::string, Histogram, std::less<>> mCalls;  // ns
};

}  // namespace replay
