#include "tools/report/Picture.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <set>
#include <tuple>

#include <fmt/format.h>

#include "tools/report/Strip.h"
#include "tools/session/Narrow.h"

namespace replay {
namespace {

constexpr std::size_t kMaxDetailed = 120;  // exposures whose shape can be told
constexpr std::size_t kMaxLanes = 6;
constexpr std::size_t kMaxLabels = 5;
constexpr double kMargin = 0.01;  // of the width, on both sides
constexpr double kLeastWidthMs = 1;
constexpr double kFinest = 1e-5;      // of a time: what is closer to it cannot be told apart
constexpr double kHalfHeight = 0.38;  // of a frame, in lanes
constexpr double kSpanHeight = 0.45;  // of a span below the middle of its lane
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Whether there is a position that can be drawn.
bool isFinite(const std::optional<Position>& position) {
    return position && std::isfinite(position->x) && std::isfinite(position->y);
}

// "NAME LEAST to LARGEST UNIT", or nothing without values.
std::string range(const char* name, const std::vector<double>& values, const char* unit) {
    if (values.empty()) return {};
    const auto [least, largest] = std::ranges::minmax(values);
    const std::string first = fmt::format("{:.4g}", least);
    const std::string last = fmt::format("{:.4g}", largest);
    return fmt::format("{} {}{} {}", name, first, first == last ? "" : " to " + last, unit);
}

}  // namespace

Picture::Picture(const SensorRecording& sensor, const Extent& extent, const TimeLimits& limits, std::size_t columns)
    : mSensor(sensor), mExtent(extent), mColumns(columns) {
    setLimits(limits);
    findBands();
}

bool Picture::isDetailed() const {
    return mBands.size() <= kMaxDetailed;
}

std::size_t Picture::groupOf(const Band& band) {
    return band.exposure->isUnserved() ? indexOf(band.exposure->outcome.reason->kind) + 1 : 0;
}

std::size_t Picture::count(std::size_t group) const {
    return narrow<std::size_t>(std::ranges::count(mBands, group, groupOf));
}

std::string Picture::ranges() const {
    std::vector<double> shutters, exposures, spans;
    for (const Band& band : mBands) {
        shutters.push_back(band.finished - band.read);
        exposures.push_back(band.read - band.exposed);
        if (band.exposure->outcome.span) spans.push_back(band.exposure->outcome.span->samples);
    }
    std::string text;
    for (const std::string& part : {range("rolling shutter", shutters, "ms"), range("exposure", exposures, "ms"),
                                    range("span", spans, "samples")}) {
        if (!part.empty()) text += (text.empty() ? "" : ", ") + part;
    }
    return text;
}

void Picture::setLimits(const TimeLimits& limits) {
    mFirst = kInfinity;
    mLast = -kInfinity;
    const auto reach = [&](double begin, double end) {
        mFirst = std::min(mFirst, begin);
        mLast = std::max(mLast, end);
    };
    if (!mSensor.samples.empty()) reach(ms(mSensor.samples.front().timeNs), ms(mSensor.samples.back().timeNs));
    for (const RecordedExposure& exposure : mSensor.exposures) {
        if (const auto times = timesOf(exposure.outcome)) reach(ms(times->exposed), ms(times->finished));
    }
    const double width = std::max(kLeastWidthMs, kFinest * std::max(std::abs(mFirst), std::abs(mLast)));
    const double margin = std::max(kMargin * (mLast - mFirst), (width - (mLast - mFirst)) / 2);
    mFrom = limits.fromMs.value_or(mFirst - margin);
    mTo = limits.toMs.value_or(mLast + margin);
}

void Picture::findBands() {
    std::vector<double> ends;  // of the last band in each lane
    for (const RecordedExposure& exposure : mSensor.exposures) {
        const auto times = timesOf(exposure.outcome);
        if (!times) continue;
        Band band{&exposure, ms(times->exposed), ms(times->read), ms(times->finished), 0};
        if (!(band.finished >= mFrom && band.exposed <= mTo)) continue;
        if (exposure.outcome.reason && !exposure.isUnserved()) {
            ++mAskedAgain;
            continue;
        }
        auto lane = std::ranges::find_if(ends, [&](double end) { return end <= band.exposed; });
        if (lane == ends.end() && ends.size() < kMaxLanes) lane = ends.insert(lane, 0);
        if (lane == ends.end()) lane = std::ranges::min_element(ends);
        band.lane = narrow<int>(lane - ends.begin());
        *lane = band.finished;
        mBands.push_back(band);
    }
    mLanes = std::max(1, narrow<int>(ends.size()));
}

std::vector<Point> Picture::samplesWithin(double fromMs, double toMs) const {
    std::vector<Point> within;
    const auto begin =
        std::ranges::partition_point(mSensor.samples, [&](const auto& sample) { return ms(sample.timeNs) < fromMs; });
    for (auto sample = begin; sample != mSensor.samples.end() && ms(sample->timeNs) <= toMs; ++sample) {
        if (std::isfinite(sample->x) && std::isfinite(sample->y))
            within.push_back({ms(sample->timeNs), static_cast<double>(sample->x), static_cast<double>(sample->y)});
    }
    return within;
}

double Picture::middle(const Band& band) const {
    const auto& span = band.exposure->outcome.span;
    return span ? std::midpoint(ms(span->firstNs), ms(span->lastNs)) : std::midpoint(band.exposed, band.finished);
}

std::optional<std::pair<double, double>> Picture::extremes(double Point::*axis) const {
    std::vector<Point> drawn = samplesWithin(mFrom, mTo);
    for (const Band& band : mBands) {
        const auto& device = band.exposure->device;
        for (const auto& position : {band.exposure->outcome.position, device ? device->position : std::nullopt})
            if (isFinite(position)) drawn.push_back({middle(band), position->x, position->y});
    }
    if (drawn.empty()) return std::nullopt;
    const auto [least, largest] = std::ranges::minmax_element(drawn, {}, axis);
    return std::pair((*least).*axis, (*largest).*axis);
}

std::string Picture::thinned(std::vector<Point> points, double longestMs) const {
    std::ranges::stable_sort(points, {}, &Point::ms);
    return thinnedRows(points, {mFrom, mTo, mColumns}, longestMs);
}

std::string Picture::samples() const {
    std::vector<Point> all = samplesWithin(mFrom, mTo);
    const double longest = longestStep(all);
    return thinned(std::move(all), longest);
}

std::string Picture::spans() const {
    if (!isDetailed()) return {};
    std::string rows;
    for (const Band& band : mBands) {
        const auto& span = band.exposure->outcome.span;
        if (!span) continue;
        rows += thinned(samplesWithin(ms(span->firstNs), ms(span->lastNs)), kInfinity) + "\n";
    }
    return rows;
}

std::string Picture::positions() const {
    std::string detailed;
    std::vector<Point> points;
    for (const Band& band : mBands) {
        const auto& [span, position] = std::tie(band.exposure->outcome.span, band.exposure->outcome.position);
        if (!span || !isFinite(position)) continue;
        points.push_back({middle(band), position->x, position->y});
        if (!isDetailed()) continue;
        const std::string its = row(points.back());
        detailed +=
            fmt::format("{} {:.10g} {:.10g}\n", its.substr(0, its.size() - 1), ms(span->firstNs), ms(span->lastNs));
    }
    return isDetailed() ? detailed : thinned(std::move(points), kInfinity);
}

std::string Picture::devicePositions() const {
    std::vector<Point> points;
    for (const Band& band : mBands) {
        const auto& device = band.exposure->device;
        if (device && isFinite(device->position))
            points.push_back({middle(band), device->position->x, device->position->y});
    }
    return thinned(std::move(points), kInfinity);
}

std::vector<Picture::Difference> Picture::differing() const {
    std::vector<Difference> found;
    for (const Band& band : mBands) {
        const auto& device = band.exposure->device;
        if (!band.exposure->differs()) continue;
        const auto& position = band.exposure->outcome.position;
        if (!isFinite(position) && !isFinite(device->position)) continue;
        const Position here = isFinite(position) ? *position : *device->position;
        found.push_back({{middle(band), here.x, here.y}, isFinite(device->position) ? *device->position : here});
    }
    return found;
}

std::string Picture::differences() const {
    std::vector<Difference> all = differing();
    const auto size = [](const Difference& one) {
        return std::hypot(one.device.x - one.here.x, one.device.y - one.here.y);
    };
    // The largest of each column of pixels.
    std::ranges::stable_sort(all, std::greater{}, size);
    std::set<std::size_t> columns;
    std::string rows;
    for (const auto& [here, device] : all) {
        if (!columns.insert(Columns{mFrom, mTo, mColumns}.at(here.ms)).second) continue;
        rows += fmt::format("{:.10g} {:.10g} {:.10g} {:.10g} {:.10g}\n", here.ms, here.x, here.y, device.x, device.y);
    }
    return rows;
}

std::string Picture::frames(std::size_t group) const {
    return isDetailed() ? polygons(group) : strip(group);
}

std::string Picture::polygons(std::size_t group) const {
    std::string rows;
    for (const Band& band : mBands) {
        if (groupOf(band) != group) continue;
        const double top = band.lane + kHalfHeight;
        const double bottom = band.lane - kHalfHeight;
        rows += fmt::format("{:.10g} {}\n{:.10g} {}\n{:.10g} {}\n{:.10g} {}\n\n", band.exposed, top, band.read, top,
                            band.finished, bottom, band.exposed + band.finished - band.read, bottom);
    }
    return rows;
}

std::string Picture::strip(std::size_t group) const {
    Strip strip(mFrom, mTo);
    for (const Band& band : mBands)
        strip.add(band.exposed, band.finished, groupOf(band));
    return strip.polygons(group);
}

std::string Picture::spanBars() const {
    if (!isDetailed()) return {};
    std::string rows;
    for (const Band& band : mBands) {
        if (const auto& span = band.exposure->outcome.span)
            rows += fmt::format("{:.10g} {:.6g} {:.10g}\n", ms(span->firstNs), band.lane - kSpanHeight,
                                ms(span->lastNs) - ms(span->firstNs));
    }
    return rows;
}

std::vector<std::pair<double, std::size_t>> Picture::unservedTimes() const {
    std::vector<std::pair<double, std::size_t>> times;
    for (const Band& band : mBands)
        if (const std::size_t group = groupOf(band); group != 0)
            times.emplace_back(std::clamp(band.exposed, mFrom, mTo), group);
    return times;
}

std::vector<Picture::Label> Picture::labels() const {
    const bool each = unserved() <= kMaxLabels;
    std::set<std::size_t> labelled;
    std::vector<Label> labels;
    for (const Band& band : mBands) {
        const std::size_t group = groupOf(band);
        if (group == 0 || labels.size() == kMaxLabels || (!labelled.insert(group).second && !each)) continue;
        labels.push_back({std::clamp(band.exposed, mFrom, mTo), group, band.exposure->outcome.reason->text});
    }
    return labels;
}

}  // namespace replay
