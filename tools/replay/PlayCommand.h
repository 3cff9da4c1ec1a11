// The tool's command that plays a session: its options, and what it does with them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace replay {

struct PlayArguments {
    std::string session;
    std::string results;  // empty: none; "-": standard output
    bool log = false;
    bool cost = false;
    unsigned repeat = 0;  // times that the session is played after the first
    std::string trace;    // empty: none
    std::string plot;     // empty: none
    std::optional<std::int32_t> sensor;
    std::optional<double> fromMs;
    std::optional<double> toMs;
};

// Adds the options and checks what is given for them. `arguments` must live until they have been parsed.
void addPlayOptions(CLI::App& app, PlayArguments& arguments);

// Plays the session and makes what was asked for. Throws SessionError, StreamError, and std::invalid_argument for a
// picture that would show nothing.
void runPlay(const PlayArguments& arguments);

}  // namespace replay
