#include "tools/report/Accuracy.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

ErrorSize sizeOf(std::vector<double> sizes) {
    if (sizes.empty()) return {};
    std::ranges::sort(sizes);
    double squares = 0;
    for (const double size : sizes)
        squares += size * size;
    const auto count = static_cast<double>(sizes.size());  // far below 2^53
    // The smallest size that 95 % of all do not exceed.
    const std::size_t index = (sizes.size() * 95 + 99) / 100 - 1;
    return {std::sqrt(squares / count), sizes[index], sizes.back()};
}

class LagSearch {
public:
    LagSearch(const std::vector<Served>& exposures, const LensPath& path) : mPath(path) {
        const std::size_t stride = 1 + exposures.size() / kMaxLagExposures;
        // The same exposures for every shift, or a shift would be judged by what it leaves out.
        for (std::size_t i = 0; i < exposures.size(); i += stride) {
            const RowTimes& rows = exposures[i].rows;
            if (path.covers(rows.exposed - kMaxLagNs, rows.finished + kMaxLagNs)) mExposures.push_back(exposures[i]);
        }
    }

    // The best of a coarse grid, then golden sections around it.
    std::optional<Lag> find() const {
        if (mExposures.empty()) return std::nullopt;
        constexpr std::int64_t kGridNs = 2'000'000;
        Lag best{0, rmsAt(0)};
        for (std::int64_t ns = -kMaxLagNs; ns <= kMaxLagNs; ns += kGridNs) {
            const double rms = rmsAt(ns);
            if (rms < best.restRms) best = {ns, rms};
        }
        return refined(std::max(best.ns - kGridNs, -kMaxLagNs), std::min(best.ns + kGridNs, kMaxLagNs));
    }

private:
    // The best between two lags with one minimum between them.
    Lag refined(std::int64_t from, std::int64_t to) const {
        constexpr std::int64_t kFinestNs = 40;
        // The part of the range that a section keeps is the golden ratio.
        const auto inner = [](std::int64_t near, std::int64_t far) {
            return near + std::llround(0.381966011250105 * static_cast<double>(far - near));  // far below 2^53
        };
        Lag low{inner(from, to), rmsAt(inner(from, to))};
        Lag high{inner(to, from), rmsAt(inner(to, from))};
        while (to - from > kFinestNs) {
            if (low.restRms <= high.restRms) {
                to = std::exchange(high, low).ns;
                low = {inner(from, to), rmsAt(inner(from, to))};
            } else {
                from = std::exchange(low, high).ns;
                high = {inner(to, from), rmsAt(inner(to, from))};
            }
        }
        return low.restRms <= high.restRms ? low : high;
    }

    double rmsAt(std::int64_t lagNs) const {
        double squares = 0;
        for (const Served& exposure : mExposures) {
            const Position mean = mPath.meanOver(shifted(exposure.rows, -lagNs));
            const double x = exposure.position.x - mean.x;
            const double y = exposure.position.y - mean.y;
            squares += x * x + y * y;
        }
        return std::sqrt(squares / static_cast<double>(mExposures.size()));  // far below 2^53
    }

    const LensPath& mPath;
    std::vector<Served> mExposures;
};

}  // namespace

std::optional<Served> servedOf(const ExposureOutcome& outcome) {
    // A position with a reason is an earlier call's.
    if (!outcome.position || outcome.reason) return std::nullopt;
    const auto rows = timesOf(outcome);
    return rows ? std::optional(Served{*rows, *outcome.position}) : std::nullopt;
}

std::vector<Served> servedOf(const SensorRecording& sensor) {
    std::vector<Served> served;
    for (const RecordedExposure& exposure : sensor.exposures) {
        if (const auto its = servedOf(exposure.outcome)) served.push_back(*its);
    }
    return served;
}

std::vector<Served> weighted(const std::vector<Served>& exposures, const LensPath& path) {
    std::vector<Served> means;
    for (const Served& exposure : exposures) {
        const RowTimes& rows = exposure.rows;
        if (path.covers(rows.exposed, rows.finished)) means.push_back({rows, path.meanOver(rows)});
    }
    return means;
}

std::optional<Position> errorOf(const Served& exposure, const LensPath& path) {
    if (!path.covers(exposure.rows.exposed, exposure.rows.finished)) return std::nullopt;
    const Position mean = path.meanOver(exposure.rows);
    return Position{exposure.position.x - mean.x, exposure.position.y - mean.y};
}

Accuracy accuracyOf(const std::vector<Served>& exposures, const LensPath& path) {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> both;
    for (const Served& exposure : exposures) {
        const auto error = errorOf(exposure, path);
        if (!error) continue;
        x.push_back(std::abs(error->x));
        y.push_back(std::abs(error->y));
        both.push_back(std::hypot(error->x, error->y));
    }
    return {both.size(), sizeOf(x), sizeOf(y), sizeOf(both), LagSearch(exposures, path).find()};
}

std::size_t exposureClass(const Served& exposure) {
    constexpr std::int64_t kNsPerMs = 1'000'000;
    const auto ms = narrow<std::uint64_t>((exposure.rows.read - exposure.rows.exposed) / kNsPerMs);
    return std::min<std::size_t>(narrow<std::size_t>(std::bit_width(ms)), kExposureClasses - 1);
}

std::array<Accuracy, kExposureClasses> accuracyByExposure(const std::vector<Served>& exposures, const LensPath& path) {
    std::array<std::vector<Served>, kExposureClasses> classes;
    for (const Served& exposure : exposures)
        classes[exposureClass(exposure)].push_back(exposure);
    std::array<Accuracy, kExposureClasses> figures;
    for (std::size_t i = 0; i < kExposureClasses; ++i)
        figures[i] = accuracyOf(classes[i], path);
    return figures;
}

}  // namespace replay
