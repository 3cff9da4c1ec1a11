#include "tools/cli/AccuracyCommand.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "tools/cli/Apart.h"
#include "tools/cli/Files.h"
#include "tools/play/Player.h"
#include "tools/report/Accuracy.h"
#include "tools/report/Causes.h"
#include "tools/report/Page.h"
#include "tools/report/SummaryJson.h"
#include "tools/session/Csv.h"
#include "tools/session/Errors.h"

namespace replay {
namespace {

constexpr const char* kAccuracyExamples = R"(Examples:
  lsc_replay accuracy session.jsonl                           compared with the session's samples
  lsc_replay accuracy --truth path.csv session.jsonl          compared with a path: columns time_ns, x, y)";

struct AccuracyArguments {
    std::string session;
    std::string truth;    // empty: none
    std::string html;     // empty: none
    std::string summary;  // empty: none
    double stampDelayUs = 0;
    std::optional<std::int32_t> sensor;
};

// What the process of one mode finds; as its bytes, since both processes are the same program.
struct Findings {
    std::int32_t sensor = 0;
    std::uint64_t served = 0;
    Accuracy all;
    std::array<Accuracy, kExposureClasses> byExposure;
    Accuracy samples;  // of the samples weighted over each exposure, against a given path
};
static_assert(std::is_trivially_copyable_v<Findings>);

std::string bytesOf(const Findings& findings) {
    return {reinterpret_cast<const char*>(&findings), sizeof findings};  // trivially copyable
}

LensPath readTruth(const std::string& path) {
    std::ifstream input = openInput(path);
    CsvReader reader(input, path, "time_ns,x,y");
    std::vector<PathPoint> points;
    for (std::vector<std::string> row = reader.next(); !row.empty(); row = reader.next())
        points.push_back({reader.integer(row[0]), {reader.decimal(row[1]), reader.decimal(row[2])}});
    return LensPath(std::move(points));
}

LensPath samplesOf(const SensorRecording& sensor, const AccuracyArguments& arguments) {
    return pathOf(sensor, std::llround(arguments.stampDelayUs * lsc::kNsPerUs));
}

// What the sensor's positions are compared with.
LensPath pathFor(const SensorRecording& sensor, const AccuracyArguments& arguments) {
    return arguments.truth.empty() ? samplesOf(sensor, arguments) : readTruth(arguments.truth);
}

// The sensor asked for; without one, that with the lowest id.
std::int32_t sensorIn(const Recording& recording, const AccuracyArguments& arguments) {
    const auto& sensors = recording.sensors();
    if (sensors.empty()) throw StreamError("no accuracy: the session has neither samples nor frames");
    const std::int32_t sensor = arguments.sensor.value_or(sensors.begin()->first);
    if (!sensors.contains(sensor)) throw StreamError(fmt::format("no accuracy: the session has no sensor {}", sensor));
    return sensor;
}

std::string othersIn(const Recording& recording, std::int32_t sensor) {
    std::string ids;
    for (const auto& [id, recorded] : recording.sensors())
        if (id != sensor && !servedOf(recorded).empty()) ids += (ids.empty() ? "" : ", ") + std::to_string(id);
    return ids;
}

void record(const std::string& path, const std::vector<Observer*>& observers, std::optional<std::int32_t> mode) {
    std::ifstream session = openInput(path);
    PlayOptions options;
    options.name = path;
    options.observers = observers;
    options.calculationMode = mode;
    play(session, options);
}

// Findings as their bytes, then the ids of other sensors with positions.
std::string playInMode(std::int32_t mode, const AccuracyArguments& arguments) {
    Recording recording;
    record(arguments.session, {&recording}, mode);
    recording.finish();

    const std::int32_t sensor = sensorIn(recording, arguments);
    const SensorRecording& recorded = recording.sensors().at(sensor);
    const LensPath path = pathFor(recorded, arguments);
    const std::vector<Served> served = servedOf(recorded);
    Findings found{sensor, served.size(), accuracyOf(served, path), accuracyByExposure(served, path), {}};
    if (!arguments.truth.empty()) found.samples = accuracyOf(weighted(served, samplesOf(recorded, arguments)), path);
    return bytesOf(found) + othersIn(recording, sensor);
}

Findings findingsIn(const std::string& bytes) {
    Findings findings;
    std::memcpy(&findings, bytes.data(), sizeof findings);
    return findings;
}

std::string lagText(const std::optional<Lag>& lag) {
    return lag ? fmt::format("{:>9.0f}", static_cast<double>(lag->ns) / lsc::kNsPerUs) : fmt::format("{:>9}", "-");
}

void printRow(std::ostream& out, const std::string& label, const Accuracy& of) {
    out << fmt::format("{:<9}{:>10}", label, of.exposures);
    for (const double ErrorSize::*size : {&ErrorSize::rms, &ErrorSize::most, &ErrorSize::worst})
        out << fmt::format("  {:>7.3f} {:>7.3f} {:>7.3f}", of.x.*size, of.y.*size, of.both.*size);
    out << lagText(of.lag) << (of.lag ? fmt::format(" {:>9.3f}", of.lag->restRms) : "") << '\n';
}

constexpr std::array<const char*, 4> kModeNames{"mean", "largest", "middle", "last"};

std::string pathName(const AccuracyArguments& arguments) {
    return arguments.truth.empty() ? "the hall samples" : arguments.truth;
}

std::string delayText(const AccuracyArguments& arguments) {
    if (arguments.stampDelayUs == 0) return {};
    return fmt::format("; the samples' time stamps are taken to be {} us late", arguments.stampDelayUs);
}

void printTable(std::ostream& out, const std::vector<Findings>& modes, const AccuracyArguments& arguments) {
    out << fmt::format("sensor {}: {}, compared with {}{}\n\n", modes[0].sensor, counted(modes[0].served, "position"),
                       pathName(arguments), delayText(arguments))
        << fmt::format("{:<19}  {:<23}  {:<23}  {:<23}{:>9}{:>10}\n", "", "rms", "95 %", "worst", "lag", "rms")
        << fmt::format("{:<9}{:>10}", "mode", "positions")
        << fmt::format("  {0:>7} {1:>7} {2:>7}  {0:>7} {1:>7} {2:>7}  {0:>7} {1:>7} {2:>7}", "x", "y", "both")
        << fmt::format("{:>9}{:>10}\n", "(us)", "without");
    for (std::size_t mode = 0; mode < modes.size(); ++mode)
        printRow(out, kModeNames[mode], modes[mode].all);
    if (!arguments.truth.empty()) printRow(out, "weighted", modes[0].samples);
}

std::string className(std::size_t index) {
    if (index == 0) return "0 to 1";
    const auto from = 1U << (index - 1);
    return index + 1 < kExposureClasses ? fmt::format("{} to {}", from, 2 * from) : fmt::format("{} or more", from);
}

void printClasses(std::ostream& out, const std::vector<Findings>& modes) {
    out << fmt::format("\n{:<14}{:>5}", "exposure", "");
    for (const char* const name : kModeNames)
        out << fmt::format("  {:^16}", name);
    out << fmt::format("\n{:<10}{:>9}", "(ms)", "positions");
    for (std::size_t mode = 0; mode < modes.size(); ++mode)
        out << fmt::format("  {:>7}{:>9}", "rms", "lag (us)");
    for (std::size_t i = 0; i < kExposureClasses; ++i) {
        if (modes[0].byExposure[i].exposures == 0) continue;
        out << fmt::format("\n{:<10}{:>9}", className(i), modes[0].byExposure[i].exposures);
        for (const Findings& mode : modes)
            out << fmt::format("  {:>7.3f}", mode.byExposure[i].both.rms) << lagText(mode.byExposure[i].lag);
    }
    out << '\n';
}

AccuracySummary summaryOf(const std::vector<Findings>& modes, const AccuracyArguments& arguments) {
    AccuracySummary summary{modes[0].sensor, pathName(arguments), {}, {}};
    for (const Findings& mode : modes)
        summary.modes.push_back(mode.all);
    if (!arguments.truth.empty()) summary.weighted = modes[0].samples;
    return summary;
}

// Plays the session once more, as it is.
void writeFiles(std::ostream& page, std::ostream& summary, const AccuracyArguments& arguments,
                const std::vector<Findings>& modes, const std::string& tables) {
    std::ostringstream unused;  // what differs from a device stands on the page
    Comparison comparison(unused);
    Statistics statistics;
    Recording recording;
    record(arguments.session, {&comparison, &statistics, &recording}, std::nullopt);
    recording.finish();
    if (!arguments.html.empty()) {
        const std::int32_t sensor = modes[0].sensor;
        const PageAccuracy accuracy{tables, sensor, pathFor(recording.sensors().at(sensor), arguments)};
        writePage(page, {fileName(arguments.session), statistics, comparison, recording, {}, accuracy});
        finish(page, arguments.html);
    }
    if (!arguments.summary.empty()) {
        writeSummaryJson(summary, statistics, comparison, summaryOf(modes, arguments));
        finish(summary, arguments.summary);
    }
}

void showAccuracy(const AccuracyArguments& arguments) {
    if (!std::isfinite(arguments.stampDelayUs)) throw std::invalid_argument("--stamp-delay must be a number");
    std::ofstream page = openOutput(arguments.html, arguments.session);
    std::ofstream summary = openOutput(arguments.summary, arguments.session);
    std::vector<Apart> processes;
    for (std::int32_t mode = lsc::kMean; lsc::isReduction(mode); ++mode)
        processes.emplace_back([mode, &arguments] { return playInMode(mode, arguments); });
    std::vector<Findings> modes;
    std::string others;
    for (Apart& process : processes) {
        const std::string bytes = process.take();
        modes.push_back(findingsIn(bytes));
        others = bytes.substr(sizeof(Findings));
    }
    if (!others.empty() && !arguments.sensor) {
        std::cerr << fmt::format("lsc_replay: only sensor {} is judged; others with positions: {} (--sensor ID)\n",
                                 modes[0].sensor, others);
    }
    if (modes[0].served == 0) {
        throw StreamError(fmt::format(
            "no accuracy: sensor {} has no position; what lsc_replay finds in the session says why", modes[0].sensor));
    }
    if (modes[0].all.exposures == 0) {
        throw StreamError(
            fmt::format("no accuracy: {} covers none of {}; times are in ns, on the clock of "
                        "the frames",
                        pathName(arguments), counted(modes[0].served, "exposure")));
    }
    std::ostringstream tables;
    printTable(tables, modes, arguments);
    printClasses(tables, modes);
    if (!(std::cout << tables.str()).flush()) throw StreamError("the table cannot be written");
    if (page.is_open() || summary.is_open()) writeFiles(page, summary, arguments, modes, tables.str());
}

}  // namespace

void addAccuracyCommand(CLI::App& app) {
    const auto arguments = std::make_shared<AccuracyArguments>();  // lives as long as the callback
    CLI::App* const command =
        app.add_subcommand("accuracy", "Says how far the positions are from where the lens was, in every mode.");
    command->footer(kAccuracyExamples);
    command->add_option("SESSION", arguments->session, "Session file, one JSON object a line")->required();
    command->add_option("--truth", arguments->truth, "Path of the lens to compare with, instead of the samples")
        ->type_name("FILE");
    command->add_option("--stamp-delay", arguments->stampDelayUs, "How late the time stamps of the samples are")
        ->type_name("US")
        ->check(CLI::Range(-1e9, 1e9));
    command
        ->add_option("--html", arguments->html,
                     "Write a page for a browser, with these figures and the session's others")
        ->type_name("FILE");
    command->add_option("--summary", arguments->summary, "Write these figures and the session's others, in JSON")
        ->type_name("FILE");
    command->add_option("--sensor", arguments->sensor, "Sensor to compare (default: the one with the lowest id)")
        ->type_name("ID");
    command->callback([arguments] { showAccuracy(*arguments); });
}

}  // namespace replay
