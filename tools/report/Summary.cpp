#include "tools/report/Summary.h"

#include <array>
#include <numeric>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "tools/report/Causes.h"
#include "tools/report/Findings.h"

namespace replay {
namespace {

using Fate = lsc::SampleQueue::Fate;

// Of the labels.
constexpr int kCountWidth = 47;
constexpr int kFigureWidth = 22;

std::string distribution(const Histogram& values) {
    if (values.count() == 0) return "none";
    return fmt::format("median {}, 95 % up to {}, largest {}", values.quantile(0.5), values.quantile(0.95),
                       values.max());
}

std::string rate(const SensorStatistics& sensor) {
    if (sensor.periodUs.count() == 0) return "unknown";
    return fmt::format("{}, longest step {}, {} above 2 periods", rateText(sensor), stepText(sensor.periodUs.max()),
                       counted(sensor.gaps(), "gap"));
}

std::string batches(const SensorStatistics& sensor) {
    return fmt::format("{} filed, {} of them split, {} discarded, {} empty", sensor.filed(),
                       sensor.batchesOf(Fate::kSplit), sensor.batchesOf(Fate::kDiscarded),
                       sensor.batchesOf(Fate::kEmpty));
}

// The figures of the clock, and how the frame's times fit together.
std::string clock(const SensorStatistics& sensor) {
    if (sensor.clock.count() == 0) return "unknown";
    const auto drift = sensor.drift();
    return fmt::format("median {}, least {}, largest {}{}", sensor.clock.quantileUs(0.5), sensor.clock.quantileUs(0),
                       sensor.clock.quantileUs(1), drift ? fmt::format(", drift {:.1f} ppm", drift->ppm) : "");
}

std::string frameTimes(const SensorStatistics& sensor) {
    std::string shutters;
    for (const auto& [shutterNs, frames] : sensor.frameUsByShutter)
        shutters += (shutters.empty() ? "" : " and ") + shortMs(number(shutterNs) / lsc::kNsPerUs, 2);
    const auto& exposure = sensor.exposureUs;
    return fmt::format("interval {}, rolling shutter {}, exposure {}",
                       sensor.frameUs.count() == 0 ? "unknown" : shortMs(number(sensor.frameUs.quantile(0.5)), 2),
                       shutters.empty() ? "unknown" : shutters,
                       exposure.count() == 0
                           ? "unknown"
                           : shortMs(number(exposure.quantile(0)), 2) + " to " + shortMs(number(exposure.max()), 2));
}

std::string handOvers(const SensorStatistics& sensor) {
    return fmt::format("{} missing in the frame numbers, {} of {} repeated", sensor.missingHandOvers(), sensor.repeated,
                       counted(sensor.samples, "sample"));
}

std::string spans(const SensorStatistics& sensor) {
    const std::uint64_t expected = sensor.expectedSpan();
    return distribution(sensor.spanSamples) + (expected == 0 ? "" : fmt::format("; median expected {}", expected)) +
           (sensor.longSpans == 0 ? "" : fmt::format("; {} past the readout", sensor.longSpans));
}

void printFigures(std::ostream& out, std::string_view indent, int width, const std::vector<Figure>& figures) {
    for (const auto& [label, text] : figures)
        out << fmt::format("{}{:<{}}{}\n", indent, label, width, text);
}

}  // namespace

std::vector<Figure> countsOf(const Statistics& statistics, const Comparison& comparison) {
    std::uint64_t exposures = 0;
    std::uint64_t samples = 0;
    std::array<std::uint64_t, kReasonKinds> missing{};
    for (const auto& [id, sensor] : statistics.sensors()) {
        exposures += sensor.exposures;
        samples += sensor.samples;
        for (std::size_t i = 0; i < kReasonKinds; ++i)
            missing[i] += sensor.missing[i].count;
    }
    std::vector<Figure> figures;
    const auto add = [&figures](std::string label, std::uint64_t count) {
        figures.push_back({std::move(label), fmt::format("{:>10}", count)});
    };
    const auto notServed = std::accumulate(missing.begin(), missing.end(), std::uint64_t{0});
    add("frames asked", statistics.frames());
    add("exposures served", exposures - notServed);
    add("exposures not served", notServed);
    for (std::size_t i = 0; i < kReasonKinds; ++i) {
        if (missing[i] != 0) add("  " + reasonText(reasonKind(i)), missing[i]);
    }
    add("samples filed", samples);
    for (const auto& [label, count] : comparison.counts())
        add(label, count);
    return figures;
}

std::vector<Figure> figuresOf(const SensorStatistics& sensor) {
    return {{"match distance (us)", distribution(sensor.matchUs)},
            {"span (samples)", spans(sensor)},
            {"sample rate", rate(sensor)},
            {"batches", batches(sensor)},
            {"hand-overs", handOvers(sensor)},
            {"clock difference (us)", clock(sensor)},
            {"frames (ms)", frameTimes(sensor)}};
}

void printSummary(std::ostream& out, const Statistics& statistics, const Comparison& comparison) {
    if (statistics.frames() != 0) out << '\n';
    printFigures(out, "", kCountWidth, countsOf(statistics, comparison));
    for (const auto& [id, sensor] : statistics.sensors()) {
        out << fmt::format("\nsensor {}\n", id);
        std::vector<Figure> figures = figuresOf(sensor);
        std::string label = "what would help";
        for (const Finding& finding : findings(id, sensor))
            figures.push_back({std::exchange(label, ""), adviceOf(finding)});
        printFigures(out, "  ", kFigureWidth, figures);
    }
}

}  // namespace replay
