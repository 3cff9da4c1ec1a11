#include "tools/replay/PlayCommand.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <CLI/CLI.hpp>

#include "tools/replay/Errors.h"
#include "tools/replay/Player.h"
#include "tools/replay/Progress.h"
#include "tools/replay/look/Cost.h"
#include "tools/replay/look/Plot.h"
#include "tools/replay/look/Recording.h"
#include "tools/replay/look/Trace.h"

namespace replay {
namespace {

constexpr const char* kExamples = R"(Examples:
  lsc_replay session.jsonl                                    which frames got a position, and why not
  lsc_replay --results results.jsonl session.jsonl            every result, exactly
  lsc_replay --plot look.png --from 2900 --to 3150 session.jsonl
  lsc_replay --trace trace.json session.jsonl                 for a trace viewer
  lsc_replay --cost --repeat 20 session.jsonl                 what each call cost)";

[[noreturn]] void failOpening(const std::string& path) {
    throw StreamError(path + ": " + std::generic_category().message(errno));
}

std::uint64_t sizeOf(const std::string& path) {
    std::error_code unknown;
    const auto size = std::filesystem::file_size(path, unknown);
    return unknown ? 0 : size;
}

std::ifstream openSession(const std::string& path) {
    std::ifstream session(path, std::ios::binary);
    if (!session) failOpening(path);
    return session;
}

void refuseSession(const std::string& path, const PlayArguments& arguments) {
    std::error_code ignored;
    if (std::filesystem::equivalent(path, arguments.session, ignored)) {
        throw StreamError(path + ": is the session itself; name another file");
    }
}

// A file to write, or a closed one without a path.
std::ofstream openOutput(const std::string& path, const PlayArguments& arguments) {
    if (path.empty()) return {};
    refuseSession(path, arguments);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) failOpening(path);
    return file;
}

bool recordsWanted(const PlayArguments& arguments) {
    return !arguments.trace.empty() || !arguments.plot.empty();
}

// Plays once; `options` says with what.
void playOnce(const PlayArguments& arguments, PlayOptions options) {
    std::ifstream session = openSession(arguments.session);
    options.name = arguments.session;
    // Nothing else may be written to the terminal that shows the progress.
    const bool silent = options.table == nullptr || isatty(STDOUT_FILENO) == 0;
    Progress progress(sizeOf(arguments.session), !arguments.log && silent);
    options.progress = [&progress](std::size_t line, std::uint64_t bytes) { progress.update(line, bytes); };
    play(session, options);
}

void playAgain(const PlayArguments& arguments, Costs& costs) {
    PlayOptions options;
    options.costs = &costs;
    options.endMonitors = true;
    for (unsigned i = 0; i < arguments.repeat; ++i)
        playOnce(arguments, options);
}

void look(Recording& recording, const PlayArguments& arguments, std::ostream& trace) {
    recording.finish();
    const std::string name = std::filesystem::path(arguments.session).filename().string();
    if (!arguments.trace.empty()) {
        writeTrace(trace, recording, name);
        if (!trace.flush()) throw StreamError(arguments.trace + ": cannot be written");
    }
    if (!arguments.plot.empty()) {
        plot(recording, {arguments.plot, name, arguments.sensor, arguments.fromMs, arguments.toMs});
    }
}

std::string checkPlotName(const std::string& file) {
    return isPlotName(file) ? std::string() : file + ": the name must end in .svg, .png or .gp";
}

}  // namespace

void addPlayOptions(CLI::App& app, PlayArguments& arguments) {
    // Not marked as required, or it would take the name of a subcommand; main() asks for it.
    app.add_option("SESSION", arguments.session, "Session file, one JSON object a line");
    app.add_option("--results", arguments.results, "Write exact results, one JSON object a call ('-': standard output)")
        ->type_name("FILE");
    app.add_flag("--log", arguments.log, "Print what the library logs on standard error");
    CLI::Option* const plot = app.add_option(
        "--plot", arguments.plot, "Draw hall trace, exposures and positions (.svg or .png; .gp: gnuplot's script)");
    plot->type_name("FILE")->check(CLI::Validator(checkPlotName, ""));
    app.add_option("--from", arguments.fromMs, "Draw from here on, in ms from the first sample")
        ->type_name("MS")
        ->needs(plot);
    app.add_option("--to", arguments.toMs, "Draw up to here")->type_name("MS")->needs(plot);
    app.add_option("--sensor", arguments.sensor, "Draw this sensor, instead of the one with the lowest id")
        ->type_name("ID")
        ->needs(plot);
    app.add_option("--trace", arguments.trace, "Write hall trace and exposures as trace events, in JSON")
        ->type_name("FILE");
    CLI::Option* const cost = app.add_flag("--cost", arguments.cost, "Print what each call into the library cost");
    app.add_option("--repeat", arguments.repeat, "Play N times more, for the cost alone")
        ->type_name("N")
        ->check(CLI::Range(0U, 1'000'000U))
        ->needs(cost);
    app.footer(kExamples);
}

void runPlay(const PlayArguments& arguments) {
    if (arguments.repeat > 0 && !std::filesystem::is_regular_file(arguments.session)) {
        throw StreamError(arguments.session + ": only a file can be played again; leave out --repeat");
    }
    const bool resultsOnly = arguments.results == "-";  // the table would stand between the results
    openSession(arguments.session);                     // before any output is made
    std::ofstream results = openOutput(resultsOnly ? std::string() : arguments.results, arguments);
    std::ofstream trace = openOutput(arguments.trace, arguments);
    if (!arguments.plot.empty()) refuseSession(arguments.plot, arguments);

    PlayOptions options;
    Recording recording;
    Costs costs;
    if (!resultsOnly) options.table = &std::cout;
    if (resultsOnly) options.results = &std::cout;
    if (results.is_open()) options.results = &results;
    if (arguments.log) options.log = &std::cerr;
    if (recordsWanted(arguments)) options.observers.push_back(&recording);
    if (arguments.cost) options.costs = &costs;
    options.endMonitors = arguments.repeat > 0;
    playOnce(arguments, options);
    look(recording, arguments, trace);
    if (!arguments.cost) return;
    playAgain(arguments, costs);
    std::ostream& out = resultsOnly ? std::cerr : std::cout;
    out << '\n';
    costs.print(out);
}

}  // namespace replay
