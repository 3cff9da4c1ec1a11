// The tool's command that compares the exposures of two sessions or two builds.
#pragma once

namespace CLI {
class App;
}

namespace replay {

// Adds the command, which runs when it is parsed and then sets `alike`, which must live as long. Throws SessionError
// and StreamError.
void addCompareCommand(CLI::App& app, bool& alike);

}  // namespace replay
