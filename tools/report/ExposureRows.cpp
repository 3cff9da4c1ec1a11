#include "tools/report/ExposureRows.h"

#include <utility>

#include <fmt/format.h>

#include "tools/report/Accuracy.h"
#include "tools/session/Csv.h"

namespace replay {
namespace {

using Column = ExposureColumn;

template <typename T>
std::string textOf(const std::optional<T>& number) {
    return number ? fmt::format("{}", *number) : std::string();
}

}  // namespace

ExposureCells exposureCells(const ExposureOutcome& outcome, const LensPath& path) {
    ExposureCells cells{textOf(outcome.frame), std::to_string(outcome.sensor),
                        textOf(outcome.type)};  // the first three columns
    if (outcome.times) {
        cells[Column::kStart] = std::to_string(outcome.times->sofNs);
        cells[Column::kExposure] = std::to_string(outcome.times->exposureNs);
    }
    cells[Column::kReadout] = std::to_string(outcome.readoutNs);
    if (outcome.position) {
        cells[Column::kX] = fmt::format("{}", outcome.position->x);
        cells[Column::kY] = fmt::format("{}", outcome.position->y);
    }
    if (outcome.span) {
        cells[Column::kSpan] = std::to_string(outcome.span->samples);
        cells[Column::kMatch] = std::to_string(outcome.span->distanceUs);
    }
    if (outcome.reason) {
        cells[Column::kReason] = reasonText(outcome.reason->kind);
        cells[Column::kDetail] = outcome.reason->text;
    }
    const std::optional<Served> served = servedOf(outcome);
    if (const auto error = served ? errorOf(*served, path) : std::nullopt) {
        cells[Column::kErrorX] = fmt::format("{}", error->x);
        cells[Column::kErrorY] = fmt::format("{}", error->y);
    }
    return cells;
}

void writeExposures(std::ostream& out, const Recording& recording) {
    out << kExposureColumns << '\n';
    for (const auto& [id, sensor] : recording.sensors()) {
        const LensPath path = pathOf(sensor, 0);
        for (const RecordedExposure& exposure : sensor.exposures) {
            const char* separator = "";
            for (const std::string& cell : exposureCells(exposure.outcome, path))
                out << std::exchange(separator, ",") << csvValue(cell);
            out << '\n';
        }
    }
}

}  // namespace replay
