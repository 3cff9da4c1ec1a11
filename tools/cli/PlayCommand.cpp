#include "tools/cli/PlayCommand.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "tools/cli/Files.h"
#include "tools/cli/Progress.h"
#include "tools/play/Player.h"
#include "tools/report/Causes.h"
#include "tools/report/Comparison.h"
#include "tools/report/Cost.h"
#include "tools/report/ExposureRows.h"
#include "tools/report/Gzip.h"
#include "tools/report/Junit.h"
#include "tools/report/Page.h"
#include "tools/report/Plot.h"
#include "tools/report/Recording.h"
#include "tools/report/Statistics.h"
#include "tools/report/Summary.h"
#include "tools/report/SummaryJson.h"
#include "tools/report/Table.h"
#include "tools/report/Trace.h"
#include "tools/session/Errors.h"

namespace replay {
namespace {

constexpr const char* kExamples = R"(Examples:
  lsc_replay session.jsonl                                    which frames got a position, and why not
  lsc_replay --results results.jsonl session.jsonl            every result, exactly
  lsc_replay --plot picture.png --from 2900 --to 3150 session.jsonl
  lsc_replay --html page.html session.jsonl                   everything on one page, for a browser
  lsc_replay --trace trace.json session.jsonl                 for a trace viewer
  lsc_replay --check --junit report.xml session.jsonl         does it still do what the device did
  lsc_replay --csv rows.csv --summary summary.json session.jsonl
  lsc_replay --cost --repeat 20 session.jsonl                 what each call cost)";

std::uint64_t sizeOf(const std::string& path) {
    std::error_code unknown;
    const auto size = std::filesystem::file_size(path, unknown);
    return unknown ? 0 : size;
}

std::unique_ptr<std::ostream> openTrace(const PlayArguments& arguments) {
    if (!arguments.trace.ends_with(".gz"))
        return std::make_unique<std::ofstream>(openOutput(arguments.trace, arguments.session));
    refuseSession(arguments.trace, arguments.session);
    checkFolder(arguments.trace);
    auto file = std::make_unique<GzipFile>(arguments.trace);
    if (!*file) failOpening(arguments.trace);
    return file;
}

// The table would stand between the results.
bool wantsTable(const PlayArguments& arguments) {
    return arguments.results != "-";
}

bool checks(const PlayArguments& arguments) {
    return !arguments.check.empty() || !arguments.junit.empty();
}

bool keepsRecording(const PlayArguments& arguments) {
    return !arguments.plot.empty() || !arguments.csv.empty() || !arguments.html.empty();
}

double toleranceOf(const PlayArguments& arguments) {
    return arguments.check.empty() ? kRounding : std::stod(arguments.check);
}

// Every view that the command knows; those that the arguments ask for are told of the session.
struct Views {
    // Rows of the table and of the comparison go to `rows`, events to `traceFile`.
    Views(const PlayArguments& arguments, std::ostream& rows, std::ostream& traceFile)
        : table(rows),
          comparison(wantsTable(arguments) ? rows : std::cerr, toleranceOf(arguments)),
          recording(toleranceOf(arguments)) {
        if (!arguments.trace.empty()) trace.emplace(traceFile, fileName(arguments.session), arguments.limits);
    }

    std::vector<Observer*> wantedBy(const PlayArguments& arguments) {
        std::vector<Observer*> wanted;
        const bool keepsFigures =
            wantsTable(arguments) || !arguments.summary.empty() || !arguments.html.empty() || checks(arguments);
        if (wantsTable(arguments)) wanted.push_back(&table);
        if (keepsFigures) wanted.insert(wanted.end(), {&comparison, &statistics});
        if (trace) wanted.push_back(&*trace);
        if (keepsRecording(arguments)) wanted.push_back(&recording);
        if (arguments.limits.given()) wanted.push_back(&extent);
        if (arguments.cost) wanted.push_back(&costs);
        return wanted;
    }

    Table table;
    Comparison comparison;
    Statistics statistics;
    std::optional<Trace> trace;
    Recording recording;
    Extent extent;
    Costs costs;
};

// Plays once; `options` says with what.
void playOnce(const PlayArguments& arguments, PlayOptions options, bool silent) {
    std::ifstream session = openInput(arguments.session);
    options.name = arguments.session;
    Progress progress(sizeOf(arguments.session), !arguments.log && silent);
    options.progress = [&progress](std::size_t line, std::uint64_t bytes) { progress.update(line, bytes); };
    play(session, options);
}

void playAgain(const PlayArguments& arguments, Costs& costs) {
    PlayOptions options;
    options.observers = {&costs};
    options.endMonitors = true;
    for (unsigned i = 0; i < arguments.repeat; ++i)
        playOnce(arguments, options, true);
}

// The files that are written after the session. They are opened before it, so that a bad name costs no replay.
struct Outputs {
    explicit Outputs(const PlayArguments& arguments)
        : trace(openTrace(arguments)),
          csv(openOutput(arguments.csv, arguments.session)),
          summary(openOutput(arguments.summary, arguments.session)),
          junit(openOutput(arguments.junit, arguments.session)),
          html(openOutput(arguments.html, arguments.session)) {
        if (arguments.plot.empty()) return;
        refuseSession(arguments.plot, arguments.session);
        checkFolder(arguments.plot);  // gnuplot opens the picture only after the session was played
    }

    std::unique_ptr<std::ostream> trace;
    std::ofstream csv;
    std::ofstream summary;
    std::ofstream junit;
    std::ofstream html;
};

void writeFiles(Views& views, const PlayArguments& arguments, Outputs& outputs) {
    if (views.trace) {
        views.trace->finish();
        finish(*outputs.trace, arguments.trace);
    }
    if (outputs.csv.is_open()) {
        writeExposures(outputs.csv, views.recording);
        finish(outputs.csv, arguments.csv);
    }
    if (outputs.summary.is_open()) {
        writeSummaryJson(outputs.summary, views.statistics, views.comparison);
        finish(outputs.summary, arguments.summary);
    }
    if (outputs.junit.is_open()) {
        writeJunit(outputs.junit, views.comparison, fileName(arguments.session));
        finish(outputs.junit, arguments.junit);
    }
    if (outputs.html.is_open()) {
        writePage(outputs.html, {.name = fileName(arguments.session),
                                 .statistics = views.statistics,
                                 .comparison = views.comparison,
                                 .recording = views.recording,
                                 .limits = arguments.limits,
                                 .accuracy = {}});
        finish(outputs.html, arguments.html);
    }
}

void draw(const Recording& recording, const PlayArguments& arguments) {
    const PlotOptions options{arguments.plot, fileName(arguments.session), arguments.sensor, arguments.limits};
    plot(plotScript(recording, options), arguments.plot);
}

std::string checkTolerance(const std::string& value) {
    double tolerance = 0;
    const bool fits = CLI::detail::lexical_cast(value, tolerance) && tolerance >= 0;
    return fits ? std::string() : value + ": the tolerance must be a number from 0 on";
}

// Holds the rows of the table back until it is known that the session has the part to be shown.
class HeldRows {
public:
    explicit HeldRows(bool hold) : mHold(hold) {}
    std::ostream& out() { return mHold ? mRows : std::cout; }
    void print() {
        if (mHold) std::cout << mRows.str();
    }

private:
    const bool mHold;
    std::ostringstream mRows;
};

void refuseTolerance(const PlayArguments& arguments) {
    if (arguments.check.empty() || std::filesystem::exists(arguments.session)) return;
    if (checkTolerance(arguments.session).empty()) throw std::invalid_argument(kCheckForm);
}

void checkLimits(const PlayArguments& arguments) {
    const bool used = !arguments.plot.empty() || !arguments.trace.empty() || !arguments.html.empty();
    if (arguments.limits.given() && !used)
        throw std::invalid_argument("--from and --to need --plot, --trace or --html");
    arguments.limits.check();
}

// Whether the session does what its device did; says so when it does not.
bool passesCheck(const PlayArguments& arguments, const Comparison& comparison) {
    if (arguments.check.empty() || comparison.isMet()) return true;
    std::uint64_t unmet = 0;
    for (const auto& [exposure, group] : comparison.groups())
        unmet += group.unmet;
    std::cerr << arguments.session << ": check failed: "
              << (comparison.groups().empty() ? "the session has no expectations"
                                              : counted(unmet, "expectation") + " not met")
              << '\n';
    return false;
}

std::string checkPlotName(const std::string& file) {
    return isPlotName(file) ? std::string() : file + ": the name must end in .svg, .png or .gp";
}

}  // namespace

void addPlayOptions(CLI::App& app, PlayArguments& arguments) {
    // Not marked as required, or it would take the name of a subcommand; main() asks for it.
    app.add_option("SESSION", arguments.session, "Session file, one JSON object a line; '-' reads standard input")
        ->transform([](const std::string& path) { return path == "-" ? "/dev/stdin" : path; });
    app.add_option("--results", arguments.results,
                   "Write exact results, one JSON object per call ('-': standard output)")
        ->type_name("FILE");
    app.add_flag("--log", arguments.log, "Print what the library logs on standard error");
    CLI::Option* const plot = app.add_option(
        "--plot", arguments.plot, "Draw hall trace, exposures and positions (.svg or .png; .gp: gnuplot's script)");
    plot->type_name("FILE")->check(CLI::Validator(checkPlotName, ""));
    app.add_option("--from", arguments.limits.fromMs,
                   "Start of the part to draw, trace or show, in ms from the first sample")
        ->type_name("MS");
    app.add_option("--to", arguments.limits.toMs, "End of the part to draw, trace or show, in ms from the first sample")
        ->type_name("MS");
    app.add_option("--sensor", arguments.sensor, "Draw this sensor instead of the one with the lowest id")
        ->type_name("ID")
        ->needs(plot);
    app.add_option("--trace", arguments.trace,
                   "Write hall trace and exposures as trace events, in JSON (.gz: compressed)")
        ->type_name("FILE");
    app.add_option("--html", arguments.html, "Write a page for a browser: figures, findings, traces, exposures")
        ->type_name("FILE");
    app.add_option("--csv", arguments.csv, "Write a row for each exposure, as comma-separated values")
        ->type_name("FILE");
    app.add_option("--summary", arguments.summary, "Write the figures and findings, in JSON")->type_name("FILE");
    app.add_flag(fmt::format("--check{{{}}}", kRounding), arguments.check,
                 "Exit with status 1 if a position differs from the device's by more than this, in x or y")
        ->check(CLI::Validator(checkTolerance, ""));
    app.add_option("--junit", arguments.junit, "Write the comparison with the device as a JUnit report")
        ->type_name("FILE");
    CLI::Option* const cost = app.add_flag("--cost", arguments.cost, "Print what each call into the library cost");
    app.add_option("--repeat", arguments.repeat, "Play N more times to measure the cost")
        ->type_name("N")
        ->check(CLI::Range(0U, 1'000'000U))
        ->needs(cost);
    app.footer(kExamples);
}

bool runPlay(const PlayArguments& arguments) {
    if (arguments.repeat > 0 && !std::filesystem::is_regular_file(arguments.session)) {
        throw StreamError(arguments.session + ": --repeat needs a regular file");
    }
    checkLimits(arguments);
    refuseTolerance(arguments);
    const bool hasTable = wantsTable(arguments);
    openInput(arguments.session);  // before any output is made
    std::ofstream results = openOutput(hasTable ? arguments.results : std::string(), arguments.session);
    Outputs outputs(arguments);
    HeldRows rows(arguments.limits.given());
    Views views(arguments, rows.out(), *outputs.trace);
    PlayOptions options;
    options.observers = views.wantedBy(arguments);
    if (!hasTable) options.results = &std::cout;
    if (results.is_open()) options.results = &results;
    if (arguments.log) options.log = &std::cerr;
    options.endMonitors = arguments.repeat > 0;
    // Nothing else may be written to the terminal that shows the progress.
    playOnce(arguments, options, !hasTable || isatty(STDOUT_FILENO) == 0);
    views.recording.finish();
    writeFiles(views, arguments, outputs);
    views.extent.checkBegin(arguments.limits);
    if (hasTable) {
        rows.print();
        printSummary(std::cout, views.statistics, views.comparison);
        if (!std::cout.flush()) throw StreamError("table cannot be written");
    }
    if (arguments.cost) {
        playAgain(arguments, views.costs);
        std::ostream& out = hasTable ? std::cout : std::cerr;
        out << '\n';
        views.costs.print(out);
    }
    if (arguments.log && !std::cerr.flush()) throw StreamError("the log cannot be written");
    const bool passed = passesCheck(arguments, views.comparison);
    // The last output, because a session may have nothing to draw.
    if (!arguments.plot.empty()) draw(views.recording, arguments);
    return passed;
}

}  // namespace replay
