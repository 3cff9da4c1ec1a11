// The tool's command that says how far the positions of a session are from where the lens was.
#pragma once

namespace CLI {
class App;
}

namespace replay {

// Adds the command, which runs when it is parsed. Throws SessionError and StreamError.
void addAccuracyCommand(CLI::App& app);

}  // namespace replay
