#include "tools/cli/ImportCommand.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <CLI/CLI.hpp>

#include "tools/cli/Files.h"
#include "tools/cli/Progress.h"
#include "tools/import/CaptureFile.h"
#include "tools/import/CaptureReader.h"
#include "tools/import/LineSplitter.h"
#include "tools/import/SessionWriter.h"
#include "tools/session/Errors.h"

namespace replay::import {
namespace {

constexpr int kNoticed = 3;  // exit status of a strict import

constexpr char kExamples[] =
    "Examples:\n"
    "  adb logcat -v threadtime > capture.txt        (docs/workbench.md: what to set on the device)\n"
    "  lsc_replay import capture.txt -o session.jsonl\n"
    "  lsc_replay session.jsonl\n"
    "  adb logcat -d -v threadtime | lsc_replay import - -o session.jsonl";

struct Arguments {
    std::string capture;
    std::string output;  // empty: standard output
    std::optional<std::uint32_t> pid;
    bool strict = false;
};

// Where the session goes: standard output, or a file that must not be the capture.
class SessionOutput {
public:
    SessionOutput(const std::string& path, const std::string& input) : mPath(path) {
        std::error_code ignored;
        if (!path.empty() && std::filesystem::equivalent(path, input, ignored)) {
            throw StreamError(path + ": this is an input file; choose another output file");
        }
    }

    void write(std::string_view text) {
        // Not before: a capture that cannot be imported leaves the file as it is.
        if (!mPath.empty() && !mFile.is_open()) {
            mFile.open(mPath, std::ios::binary | std::ios::trunc);
            if (!mFile) failOpening(mPath);
        }
        if (!(stream() << text)) fail();
    }
    void finish() {
        if (!stream().flush()) fail();
    }

private:
    std::ostream& stream() { return mPath.empty() ? std::cout : mFile; }
    [[noreturn]] void fail() const {
        throw StreamError(mPath.empty() ? std::string("the session cannot be written") : mPath + ": cannot be written");
    }

    const std::string mPath;
    std::ofstream mFile;
};

[[noreturn]] void failEmpty(const std::string& name, const CaptureFacts& facts) {
    const std::string form =
        "messages of the library without a tag, as the forms raw and thread print them; record with "
        "logcat -v threadtime";
    const std::string none =
        "no message of the library in this file; record with logcat -v threadtime, and set the properties "
        "that docs/workbench.md names";
    if (!facts.otherProcesses.empty()) {
        std::string processes;
        for (const auto& [pid, lines] : facts.otherProcesses)
            processes += (processes.empty() ? "" : ", ") + std::to_string(pid);
        throw SessionError(
            name, std::max<std::size_t>(facts.lines, 1),
            "no message of the library from the process that --pid names; there are some from " + processes);
    }
    throw SessionError(name, std::max<std::size_t>(facts.lines, 1), facts.bareLines != 0 ? form : none);
}

// Returns the number of notices.
std::size_t importCapture(const Arguments& arguments) {
    CaptureFile file(arguments.capture);
    SessionOutput output(arguments.output, arguments.capture);
    Timeline timeline;
    CaptureReader reader(timeline, arguments.pid);
    Report report;
    SessionWriter writer(file.name(), reader.facts(), timeline, report,
                         [&](std::string_view text) { output.write(text); });
    LineSplitter lines([&](std::string_view line) {
        reader.add(line);
        writer.write(false);
    });
    {
        Progress progress(file.size(), true);
        const auto take = [&](std::string_view bytes) {
            lines.add(bytes);
            progress.update(reader.facts().lines, file.position());
        };
        file.read(take, [&] { lines.finish(); });
    }
    reader.finish();
    if (reader.facts().ownLines == 0) failEmpty(file.name(), reader.facts());
    writer.write(true);
    output.finish();
    report.print(std::cerr, file.name(), reader.facts());
    return report.notices();
}

}  // namespace

void addImportCommand(CLI::App& app) {
    const auto arguments = std::make_shared<Arguments>();  // lives as long as the callback
    CLI::App* const command = app.add_subcommand("import", "Makes a session from a device's log.");
    command->footer(kExamples);
    command
        ->add_option("CAPTURE", arguments->capture,
                     "Log of logcat in any form with a tag, plain or compressed, or a bug report's .zip; '-' reads "
                     "standard input")
        ->required();
    command->add_option("-o,--output", arguments->output, "Session to write; standard output without it")
        ->type_name("SESSION");
    command->add_option("--pid", arguments->pid, "The process of the log; the first that logs without it")
        ->type_name("PID");
    command->add_flag("--strict", arguments->strict, "Exit status 3 when anything is missing or uncertain");
    command->callback([arguments] {
        const std::size_t notices = importCapture(*arguments);
        if (arguments->strict && notices != 0) throw CLI::RuntimeError(kNoticed);
    });
}

}  // namespace replay::import
