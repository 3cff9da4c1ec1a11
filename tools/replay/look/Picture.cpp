#include "tools/replay/look/Picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <span>
#include <stdexcept>
#include <tuple>

namespace replay {
namespace {

constexpr std::size_t kColumns = 3000;     // of a picture; more samples than twice that are reduced to their extremes
constexpr std::size_t kMaxDetailed = 120;  // exposures whose parts can be told apart
constexpr std::size_t kMaxLanes = 6;
constexpr int kReasonRows = 6;         // over which the reasons are spread, so that neighbours do not collide
constexpr double kRowHeight = 0.36;    // of a reason, in lanes
constexpr std::size_t kMaxNamed = 24;  // exposures without a position that each get their reason
constexpr double kLastReason = 0.65;   // share of the width where a reason may begin and still ends within the picture
constexpr double kMargin = 0.01;       // of the width, on both sides
constexpr double kNsPerMs = 1e6;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

Picture::Picture(const SensorRecording& sensor, std::int64_t beginNs, std::optional<double> fromMs,
                 std::optional<double> toMs)
    : mSensor(sensor), mBeginNs(beginNs) {
    setLimits(fromMs, toMs);
    findBands();
}

bool Picture::isDetailed() const {
    return mBands.size() <= kMaxDetailed;
}

std::size_t Picture::unserved() const {
    return static_cast<std::size_t>(  // a count
        std::ranges::count_if(mBands, [](const Band& band) { return isUnserved(*band.outcome); }));
}

double Picture::topOfBoxes() const {
    return (isDetailed() ? mLanes : 1) - 0.5;
}

double Picture::top() const {
    const std::string rows = reasons();
    const auto count = std::min<std::ptrdiff_t>(kReasonRows, std::ranges::count(rows, '\n'));
    return topOfBoxes() + kRowHeight * static_cast<double>(count);  // few
}

// In doubles, because two times may lie farther apart than 64 bits reach.
double Picture::ms(std::int64_t ns) const {
    return (static_cast<double>(ns) - static_cast<double>(mBeginNs)) / kNsPerMs;
}

std::string Picture::row(const RecordedSample& sample) const {
    const auto x = static_cast<double>(sample.x);  // exact
    const auto y = static_cast<double>(sample.y);
    return number(ms(sample.timeNs)) + " " + number(x) + " " + number(y) + "\n";
}

void Picture::setLimits(std::optional<double> fromMs, std::optional<double> toMs) {
    double first = kInfinity;
    double last = -kInfinity;
    const auto reach = [&](double begin, double end) {
        first = std::min(first, begin);
        last = std::max(last, end);
    };
    if (!mSensor.samples.empty()) reach(ms(mSensor.samples.front().timeNs), ms(mSensor.samples.back().timeNs));
    for (const ExposureOutcome& outcome : mSensor.exposures) {
        if (const auto times = timesOf(outcome)) reach(ms(times->exposed), ms(times->finished));
    }
    const double margin = kMargin * std::max(last - first, 1.0);
    mFrom = fromMs.value_or(first - margin);
    mTo = toMs.value_or(last + margin);
    // Without anything to show there are no limits, and nobody gave any.
    const bool given = fromMs || toMs;
    if (given && (!std::isfinite(mFrom) || !std::isfinite(mTo) || !(mFrom < mTo))) {
        throw std::invalid_argument("nothing to plot: the times must be finite, the first before the second");
    }
}

void Picture::findBands() {
    std::vector<double> ends;  // of the last band in each lane
    for (const ExposureOutcome& outcome : mSensor.exposures) {
        const auto times = timesOf(outcome);
        // Of an exposure that was asked for again, the first time counts.
        if (!times || (outcome.reason && !isUnserved(outcome))) continue;
        Band band{&outcome, ms(times->exposed), ms(times->read), ms(times->finished), 0};
        if (!(band.finished >= mFrom && band.exposed <= mTo)) continue;
        auto lane = std::ranges::find_if(ends, [&](double end) { return end <= band.exposed; });
        if (lane == ends.end() && ends.size() < kMaxLanes) lane = ends.insert(lane, 0);
        if (lane == ends.end()) lane = std::ranges::min_element(ends);
        band.lane = static_cast<int>(lane - ends.begin());  // few
        *lane = band.finished;
        mBands.push_back(band);
    }
    mLanes = std::max(1, static_cast<int>(ends.size()));  // few
}

std::vector<RecordedSample> Picture::samplesWithin(double fromMs, double toMs) const {
    std::vector<RecordedSample> within;
    const auto begin =
        std::ranges::partition_point(mSensor.samples, [&](const auto& sample) { return ms(sample.timeNs) < fromMs; });
    for (auto sample = begin; sample != mSensor.samples.end() && ms(sample->timeNs) <= toMs; ++sample) {
        if (std::isfinite(sample->x) && std::isfinite(sample->y)) within.push_back(*sample);
    }
    return within;
}

// The longest time between two samples that still follow each other.
double Picture::longestStepMs(const std::vector<RecordedSample>& samples) const {
    constexpr double kPeriods = 3;
    std::vector<double> steps;
    for (std::size_t i = 1; i < samples.size(); ++i)
        steps.push_back(ms(samples[i].timeNs) - ms(samples[i - 1].timeNs));
    if (steps.empty()) return kInfinity;
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);  // within the list
    std::ranges::nth_element(steps, middle);
    return kPeriods * *middle;
}

std::string Picture::samples() const {
    const std::vector<RecordedSample> all = samplesWithin(mFrom, mTo);
    const std::size_t group = all.size() > 2 * kColumns ? all.size() / kColumns : 1;
    const double longest = longestStepMs(all);
    std::string rows;
    for (std::size_t i = 0; i < all.size(); i += group) {
        if (i > 0 && ms(all[i].timeNs) - ms(all[i - 1].timeNs) > longest) rows += "\n";
        const auto column = std::span(all).subspan(i, std::min(group, all.size() - i));
        if (group == 1) {
            rows += row(column.front());
            continue;
        }
        const auto [lowX, highX] = std::ranges::minmax(column, {}, &RecordedSample::x);
        const auto [lowY, highY] = std::ranges::minmax(column, {}, &RecordedSample::y);
        rows += row({column.front().timeNs, lowX.x, lowY.y}) + row({column.back().timeNs, highX.x, highY.y});
    }
    return rows;
}

std::string Picture::spans() const {
    std::string rows;
    for (const Band& band : mBands) {
        if (!band.outcome->span) continue;
        for (const RecordedSample& sample :
             samplesWithin(ms(band.outcome->span->firstNs), ms(band.outcome->span->lastNs)))
            rows += row(sample);
        rows += "\n";
    }
    return rows;
}

std::string Picture::positions() const {
    std::string rows;
    for (const Band& band : mBands) {
        const auto& [span, position] = std::tie(band.outcome->span, band.outcome->position);
        if (!span || !position || !std::isfinite(position->x) || !std::isfinite(position->y)) continue;
        const double begin = ms(span->firstNs);
        const double end = ms(span->lastNs);
        rows += number((begin + end) / 2) + " " + number(position->x) + " " + number(position->y) + " " +
                number(begin) + " " + number(end) + "\n";
    }
    return rows;
}

std::string Picture::boxes(double Band::*begin, double Band::*end, bool missedOnly) const {
    constexpr double kHalfHeight = 0.38;
    std::string rows;
    for (const Band& band : mBands) {
        if (missedOnly && !isUnserved(*band.outcome)) continue;
        const int lane = isDetailed() ? band.lane : 0;
        rows += number((band.*begin + band.*end) / 2) + " " + std::to_string(lane) + " " + number(band.*begin) + " " +
                number(band.*end) + " " + number(lane - kHalfHeight) + " " + number(lane + kHalfHeight) + "\n";
    }
    return rows;
}

std::string Picture::reasons() const {
    const bool each = isDetailed() && unserved() <= kMaxNamed;
    const auto kind = [](const Band& band) {
        return isUnserved(*band.outcome) ? std::optional(band.outcome->reason->kind) : std::nullopt;
    };
    std::string rows;
    int count = 0;
    for (auto band = mBands.begin(); band != mBands.end();) {
        const auto its = kind(*band);
        const auto other = [&](const Band& next) { return kind(next) != its; };
        const auto end = each || !its ? band + 1 : std::find_if(band, mBands.end(), other);
        if (its) {
            const std::string grouped = std::to_string(end - band) + " x " + std::string(reasonText(*its));
            const double begin = std::clamp(band->exposed, mFrom, mFrom + kLastReason * (mTo - mFrom));
            rows += number(begin) + " " + number(topOfBoxes() + kRowHeight * (count++ % kReasonRows + 0.5)) + " \"" +
                    (each ? band->outcome->reason->text : grouped) + "\"\n";
        }
        band = end;
    }
    return rows;
}

}  // namespace replay
