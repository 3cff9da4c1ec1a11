// The comparison with a device as a JUnit report, for CI systems: a test case for each sensor and type.
#pragma once

#include <ostream>
#include <string>

#include "tools/report/Comparison.h"

namespace replay {

// `name` is the session's. Without anything to compare, the one test case fails.
void writeJunit(std::ostream& out, const Comparison& comparison, const std::string& name);

}  // namespace replay
