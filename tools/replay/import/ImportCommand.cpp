#include "tools/replay/import/ImportCommand.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/replay/Errors.h"
#include "tools/replay/import/CaptureReader.h"
#include "tools/replay/import/ColumnSession.h"
#include "tools/replay/import/SessionWriter.h"

namespace replay::import {
namespace {

constexpr std::size_t kMaxHolesShown = 20;  // the session lists all

constexpr char kExamples[] =
    "Examples:\n"
    "  adb logcat -v threadtime > capture.txt        (docs/workbench.md: what to set on the device)\n"
    "  lsc_replay import capture.txt -o session.jsonl\n"
    "  lsc_replay session.jsonl\n"
    "  lsc_replay import --ois ois.txt --frames frames.csv --frame-columns time,exposure,readout --frame-unit us";

struct Arguments {
    std::string capture;
    std::string output;  // empty: standard output
    std::optional<std::uint32_t> pid;
    std::optional<std::uint64_t> readout;  // in the frames' unit
    ColumnOptions columns;
};

std::ifstream openInput(const std::string& path) {
    std::ifstream input(path, std::ios::binary);
    if (!input) throw StreamError(path + ": " + std::generic_category().message(errno));
    // A directory opens, and fails when it is read.
    if (std::filesystem::is_directory(path)) throw StreamError(path + ": is a directory");
    return input;
}

void writeSession(const std::string& text, const std::string& path, const std::vector<std::string>& inputs) {
    if (path.empty()) {
        if (!(std::cout << text << std::flush)) throw StreamError("the session cannot be written");
        return;
    }
    for (const std::string& input : inputs) {
        std::error_code ignored;
        if (std::filesystem::equivalent(path, input, ignored)) throw StreamError(path + ": is read; name another file");
    }
    std::ofstream output(path, std::ios::binary | std::ios::trunc);
    if (!output) throw StreamError(path + ": " + std::generic_category().message(errno));
    if (!(output << text << std::flush)) throw StreamError(path + ": cannot be written");
}

Capture readCapture(const Arguments& arguments) {
    std::ifstream input = openInput(arguments.capture);
    CaptureReader reader(arguments.pid);
    std::size_t lines = 0;
    for (std::string line; std::getline(input, line); ++lines)
        reader.add(line);
    if (input.bad()) throw StreamError(arguments.capture + ": cannot be read");
    Capture capture = reader.finish();
    if (capture.ownLines == 0) {
        throw SessionError(arguments.capture, std::max<std::size_t>(lines, 1),
                           "no message of the library up to here; record with logcat -v threadtime and the properties "
                           "that docs/workbench.md names");
    }
    return capture;
}

void importCapture(const Arguments& arguments) {
    SessionWriter writer(readCapture(arguments), arguments.capture);
    writeSession(writer.write(), arguments.output, {arguments.capture});
    const std::vector<std::string>& holes = writer.holes();
    if (holes.empty()) return;
    std::cerr << arguments.capture << ": " << holes.size() << (holes.size() == 1 ? " hole\n" : " holes\n");
    for (std::size_t i = 0; i < std::min(holes.size(), kMaxHolesShown); ++i)
        std::cerr << "  " << holes[i] << '\n';
    if (holes.size() > kMaxHolesShown) {
        std::cerr << "  ... and " << holes.size() - kMaxHolesShown << " more, listed in the session\n";
    }
}

void importRecording(Arguments& arguments) {
    ColumnOptions& columns = arguments.columns;
    if (arguments.readout) {
        const std::uint64_t scale = static_cast<std::uint64_t>(columns.frameUnit);  // one unit in ns
        if (*arguments.readout > UINT32_MAX / scale) throw CLI::ValidationError("--readout", "longer than 4 s");
        columns.readoutNs = static_cast<std::uint32_t>(*arguments.readout * scale);  // just tested
    }
    std::ifstream ois = openInput(columns.oisFile);
    std::ifstream frames = openInput(columns.framesFile);
    try {
        const ColumnSession session = importColumns(ois, frames, columns);
        writeSession(session.text, arguments.output, {columns.oisFile, columns.framesFile});
        if (session.unused != 0) {
            std::cerr << columns.oisFile << ": " << session.unused << " lens positions belong to no frame; left out\n";
        }
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(error.what());
    }
}

void run(Arguments& arguments) {
    const bool recording = !arguments.columns.oisFile.empty();
    if (recording == !arguments.capture.empty()) {
        throw CLI::ValidationError("import", "expected a CAPTURE, or --ois and --frames");
    }
    recording ? importRecording(arguments) : importCapture(arguments);
}

void addColumnOptions(CLI::App& command, ColumnOptions& columns) {
    const std::map<std::string, TimeUnit> units{
        {"ns", TimeUnit::kNs}, {"us", TimeUnit::kUs}, {"ms", TimeUnit::kMs}, {"s", TimeUnit::kS}};
    const auto unit = [&](const std::string& name, TimeUnit& value, const std::string& of) {
        command.add_option(name, value, "Unit of the times in " + of + ": ns (default), us, ms or s")
            ->transform(CLI::CheckedTransformer(units).description(""))
            ->type_name("UNIT");
    };
    CLI::Option* const ois =
        command.add_option("--ois", columns.oisFile, "Lens positions, one a line, in columns")->type_name("FILE");
    CLI::Option* const frames =
        command.add_option("--frames", columns.framesFile, "Frames, one a line, in columns")->type_name("FILE");
    ois->needs(frames);
    frames->needs(ois);
    command
        .add_option("--ois-columns", columns.oisColumns,
                    "Columns of the lens positions from the left: x, y, time, and if there frame, hall_x, hall_y; '-' "
                    "skips one")
        ->type_name("NAMES")
        ->capture_default_str();
    command
        .add_option("--frame-columns", columns.frameColumns,
                    "Columns of the frames from the left: time (start of frame), exposure, and if there readout, frame")
        ->type_name("NAMES")
        ->capture_default_str();
    unit("--ois-unit", columns.oisUnit, "the lens positions");
    unit("--frame-unit", columns.frameUnit, "the frames");
    command.add_option("--delay", columns.delay, "How many frames later a frame is asked for")
        ->type_name("FRAMES")
        ->capture_default_str();
}

}  // namespace

void addImportCommand(CLI::App& app) {
    const auto arguments = std::make_shared<Arguments>();  // lives as long as the callback
    CLI::App* const command = app.add_subcommand(
        "import", "Makes a session from a device's log, or from recorded lens positions and frames.");
    command->footer(kExamples);
    command->add_option("CAPTURE", arguments->capture, "Log: logcat -v threadtime, time or brief, with any modifiers");
    command->add_option("-o,--output", arguments->output, "Session to write; standard output without it")
        ->type_name("SESSION");
    command->add_option("--pid", arguments->pid, "The process of the log; the first that logs without it")
        ->type_name("PID");
    addColumnOptions(*command, arguments->columns);
    command->add_option("--readout", arguments->readout, "Readout of every frame, where no column gives it")
        ->type_name("TIME");
    command->callback([arguments] { run(*arguments); });
}

}  // namespace replay::import
