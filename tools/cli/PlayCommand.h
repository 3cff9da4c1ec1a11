// The tool's command that plays a session: its options, and what it does with them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/report/Extent.h"

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
    std::string html;     // empty: none
    std::string csv;      // empty: none
    std::string summary;  // empty: none
    std::string check;    // its tolerance; empty: none
    std::string junit;    // empty: none
    std::optional<std::int32_t> sensor;
    TimeLimits limits;  // of picture, trace and page
};

// For a tolerance that was taken for a file.
inline constexpr char kCheckForm[] = "--check takes its tolerance after \"=\", as in --check=0.1";

// Adds the options and checks what is given for them. `arguments` must live until they have been parsed.
void addPlayOptions(CLI::App& app, PlayArguments& arguments);

// Plays the session and makes what was asked for. False when a check was asked for and fails. Throws SessionError,
// StreamError, and std::invalid_argument for a picture that would show nothing.
bool runPlay(const PlayArguments& arguments);

}  // namespace replay
