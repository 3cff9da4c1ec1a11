#include "tools/cli/CompareCommand.h"

#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/cli/Apart.h"
#include "tools/cli/Files.h"
#include "tools/play/Player.h"
#include "tools/report/Difference.h"
#include "tools/report/ExposureRows.h"
#include "tools/session/Errors.h"

namespace replay {
namespace {

constexpr const char* kCompareExamples = R"(Examples:
  lsc_replay compare before.jsonl after.jsonl                 two sessions, both played
  lsc_replay --csv before.csv session.jsonl                   the build before a change
  lsc_replay compare before.csv session.jsonl                 the build after it)";

struct CompareArguments {
    std::string before;
    std::string after;
};

bool isCsv(const std::string& path) {
    std::ifstream input = openInput(path);
    std::string line;
    return std::getline(input, line) && line.starts_with(kExposureColumns);
}

std::string rowsOf(const std::string& path) {
    std::ifstream input = openInput(path);
    std::ostringstream rows;
    if (isCsv(path)) {
        rows << input.rdbuf();
        return rows.str();
    }
    Recording recording;
    PlayOptions options;
    options.name = path;
    options.observers = {&recording};
    play(input, options);
    recording.finish();
    writeExposures(rows, recording);
    return rows.str();
}

std::vector<ExposureRow> readRows(const std::string& text, const std::string& path) {
    std::istringstream rows(text);
    return readExposures(rows, path);
}

bool compare(const CompareArguments& arguments) {
    // The library of a process keeps what the first session leaves.
    Apart before([&arguments] { return rowsOf(arguments.before); });
    Apart after([&arguments] { return rowsOf(arguments.after); });
    const std::vector<ExposureRow> rowsBefore = readRows(before.take(), arguments.before);
    const Difference difference = compareExposures(rowsBefore, readRows(after.take(), arguments.after));
    printDifference(std::cout, difference);
    if (!std::cout.flush()) throw StreamError("the comparison cannot be written");
    return difference.isAlike();
}

}  // namespace

void addCompareCommand(CLI::App& app, bool& alike) {
    const auto arguments = std::make_shared<CompareArguments>();  // lives as long as the callback
    CLI::App* const command = app.add_subcommand("compare", "Says how the exposures of two sessions differ.");
    command->footer(kCompareExamples);
    command->add_option("BEFORE", arguments->before, "Session, or a file that --csv wrote")->required();
    command->add_option("AFTER", arguments->after, "The same")->required();
    command->callback([arguments, &alike] {
        // Found before they are compared, so that it cannot be taken for a difference.
        for (const std::string& path : {arguments->before, arguments->after}) {
            try {
                openInput(path);
            } catch (const StreamError& error) {
                throw std::invalid_argument(error.what());
            }
        }
        alike = compare(*arguments);
    });
}

}  // namespace replay
