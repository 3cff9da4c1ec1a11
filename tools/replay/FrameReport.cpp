#include "tools/replay/FrameReport.h"

#include <cmath>
#include <cstdio>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

#include "tools/replay/look/Summary.h"

namespace replay {
namespace {

// Widths of the columns, each after one space.
constexpr std::size_t kSensorWidth = 6;
constexpr std::size_t kStartWidth = 20;
constexpr std::size_t kExposureWidth = 14;
constexpr std::size_t kTypeWidth = 5;
constexpr std::size_t kPositionWidth = 13;
constexpr std::size_t kCountWidth = 10;
constexpr int kLabelWidth = 46;

std::string right(std::string_view text, std::size_t width) {
    std::string cell = " ";
    if (text.size() < width) cell.append(width - text.size(), ' ');
    return cell.append(text);
}

// Microseconds with the rest as decimals.
std::string microseconds(std::uint64_t ns) {
    char text[32];
    std::snprintf(text, sizeof text, "%llu.%03u", static_cast<unsigned long long>(ns / 1000),  // what %llu takes
                  static_cast<unsigned>(ns % 1000));
    return text;
}

std::string coordinate(double value) {
    constexpr double kMaxFixed = 1e7;  // keeps the column's width
    char text[32];
    std::snprintf(text, sizeof text, std::abs(value) < kMaxFixed ? "%.4f" : "%.6g", value);
    return text;
}

std::string header() {
    return right("sensor", kSensorWidth) + right("start of frame (ns)", kStartWidth) +
           right("exposure (us)", kExposureWidth) + right("type", kTypeWidth) + right("x", kPositionWidth) +
           right("y", kPositionWidth);
}

std::string summaryLine(std::string_view label, std::uint64_t count) {
    std::string line(label);
    if (line.size() < kLabelWidth) line.append(kLabelWidth - line.size(), ' ');
    return line + right(std::to_string(count), kCountWidth) + "\n";
}

std::vector<Observer*> withOwn(std::vector<Observer*> observers, Observer& own) {
    observers.push_back(&own);
    return observers;
}

}  // namespace

FrameReport::FrameReport(std::ostream& out, std::vector<Observer*> observers)
    : mOut(out), mObservers(withOwn(std::move(observers), mStatistics)) {}

void FrameReport::addFrame(const std::vector<ExposureOutcome>& outcomes) {
    if (mFrames == 0) mOut << header() << '\n';
    ++mFrames;
    for (const ExposureOutcome& outcome : outcomes) {
        addRow(outcome);
        for (Observer* const observer : mObservers)
            observer->exposureAsked(outcome);
    }
    mExpectations.asked(outcomes);
}

void FrameReport::addRow(const ExposureOutcome& outcome) {
    ++mExposures;
    std::string row = right(std::to_string(outcome.sensor), kSensorWidth);
    row += right(outcome.exposure ? std::to_string(outcome.exposure->startOfFrameNs) : "-", kStartWidth);
    row += right(outcome.exposure ? microseconds(outcome.exposure->exposureTimeNs) : "-", kExposureWidth);
    row += right(outcome.type ? std::to_string(*outcome.type) : "-", kTypeWidth);
    if (outcome.position) {
        row += right(coordinate(outcome.position->x), kPositionWidth);
        row += right(coordinate(outcome.position->y), kPositionWidth);
    }
    if (outcome.reason) {
        row += "  " + outcome.reason->text;
        ++mReasons[static_cast<std::size_t>(outcome.reason->kind)];  // kinds count from 0
    }
    mOut << row << '\n';
}

void FrameReport::finish() {
    const std::uint64_t notServed = std::accumulate(mReasons.begin(), mReasons.end(), std::uint64_t{0});
    if (mFrames != 0) mOut << '\n';
    mOut << summaryLine("frames asked", mFrames) << summaryLine("exposures served", mExposures - notServed)
         << summaryLine("exposures not served", notServed);
    for (std::size_t kind = 0; kind < mReasons.size(); ++kind) {
        if (mReasons[kind] == 0) continue;
        // The counters are in the order of the kinds.
        mOut << summaryLine("  " + std::string(reasonText(static_cast<Reason::Kind>(kind))), mReasons[kind]);
    }
    mOut << summaryLine("samples filed", mSamples.filed());
    for (const auto& [label, count] : mExpectations.counts())
        mOut << summaryLine(label, count);
    printSummary(mOut, mStatistics);
}

}  // namespace replay
