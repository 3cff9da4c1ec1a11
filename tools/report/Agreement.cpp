#include "tools/report/Agreement.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include <fmt/format.h>

namespace replay {
namespace {

bool isNear(const std::string& a, const std::string& b, double tolerance) {
    return a == b || std::abs(std::strtod(a.c_str(), nullptr) - std::strtod(b.c_str(), nullptr)) <= tolerance;
}

}  // namespace

std::optional<Expectation::Printed> printedPosition(const ExposureOutcome& outcome) {
    // A position with a reason is an earlier call's.
    if (!outcome.position || outcome.reason) return std::nullopt;
    return Expectation::Printed{fmt::format("{:f}", outcome.position->x), fmt::format("{:f}", outcome.position->y)};
}

Agreement agreementOf(const std::optional<Expectation::Printed>& here,
                      const std::optional<Expectation::Printed>& device, double tolerance) {
    if (!here && !device) return Agreement::kSame;
    if (!here) return Agreement::kOnlyDevice;
    if (!device) return Agreement::kOnlyHere;
    if (here->x == device->x && here->y == device->y) return Agreement::kSame;
    const bool near = isNear(here->x, device->x, tolerance) && isNear(here->y, device->y, tolerance);
    return near ? Agreement::kNear : Agreement::kDifferent;
}

}  // namespace replay
