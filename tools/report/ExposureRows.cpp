#include "tools/report/ExposureRows.h"

#include <fmt/format.h>

#include "tools/report/Accuracy.h"
#include "tools/session/Csv.h"

namespace replay {
namespace {

template <typename T>
std::string textOf(const std::optional<T>& number) {
    return number ? fmt::format("{}", *number) : std::string();
}

std::string textOf(const std::optional<Position>& position) {
    return position ? fmt::format("{},{}", position->x, position->y) : ",";
}

std::string rowOf(const ExposureOutcome& outcome, const LensPath& path) {
    std::string row = textOf(outcome.frame) + ',' + std::to_string(outcome.sensor) + ',' + textOf(outcome.type) + ',';
    row += outcome.times ? fmt::format("{},{}", outcome.times->sofNs, outcome.times->exposureNs) : ",";
    row += fmt::format(",{},", outcome.readoutNs) + textOf(outcome.position) + ',';
    row += outcome.span ? fmt::format("{},{}", outcome.span->samples, outcome.span->distanceUs) : ",";
    const auto& reason = outcome.reason;
    row += ',' + (reason ? csvValue(reasonText(reason->kind)) + ',' + csvValue(reason->text) : ",") + ',';
    const std::optional<Served> served = servedOf(outcome);
    return row + textOf(served ? errorOf(*served, path) : std::nullopt);
}

}  // namespace

void writeExposures(std::ostream& out, const Recording& recording) {
    out << kExposureColumns << '\n';
    for (const auto& [id, sensor] : recording.sensors()) {
        const LensPath path = pathOf(sensor, 0);
        for (const RecordedExposure& exposure : sensor.exposures)
            out << rowOf(exposure.outcome, path) << '\n';
    }
}

}  // namespace replay
