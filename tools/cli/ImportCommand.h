// lsc_replay import: makes a session from a device's log.
#pragma once

namespace CLI {
class App;
}

namespace replay::import {

// Adds the subcommand to the tool. It runs while the command line is parsed, and throws what the tool's main function
// tells its caller: SessionError and CLI::ParseError for bad input, other exceptions for files that cannot be read or
// written. No positional argument of the tool may be required: it would take the subcommand's name for its value.
void addImportCommand(CLI::App& app);

}  // namespace replay::import
