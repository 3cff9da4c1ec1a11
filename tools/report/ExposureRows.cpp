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
    const auto& [sensor, type, times, position, reason, readoutNs, span, frame] = outcome;
    ExposureCells cells{textOf(frame), std::to_string(sensor), textOf(type)};  // the first three columns
    if (times) {
        cells[Column::kStart] = std::to_string(times->sofNs);
        cells[Column::kExposure] = std::to_string(times->exposureNs);
    }
    cells[Column::kReadout] = std::to_string(readoutNs);
    if (position) {
        cells[Column::kX] = fmt::format("{}", position->x);
        cells[Column::kY] = fmt::format("{}", position->y);
    }
    if (span) {
        cells[Column::kSpan] = std::to_string(span->samples);
        cells[Column::kMatch] = std::to_string(span->distanceUs);
    }
    if (reason) {
        cells[Column::kReason] = reasonText(reason->kind);
        cells[Column::kDetail] = reason->text;
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
