// Plays a session against the library, with the host platform in the platform's place. For the tool, and for tests and
// fuzzers: a bad session is an exception, nothing is printed but what the options ask for. One thread, and one player
// at a time, because the host platform and the library are process-wide.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace replay {

class Observer;

struct PlayOptions {
    std::string name = "session";      // the session's name in messages
    std::ostream* results = nullptr;   // exact results, a line a call
    std::ostream* log = nullptr;       // what the library logs
    std::vector<Observer*> observers;  // hear what happens
    // Ends the monitors that the session leaves behind, so that the session can be played again in this process.
    bool endMonitors = false;
    std::optional<std::int32_t> calculationMode;  // instead of the one that the session sets
    // Called after every line that was carried out, with its number and the bytes read so far.
    std::function<void(std::size_t line, std::uint64_t bytes)> progress;
};

// Puts the host platform into its initial state and plays the whole session. The library keeps its own state as long as
// the process lives: a second session finds the monitors, the settings and the OTP results of the first.
// Throws SessionError at the first line that the format does not allow, with the results of the lines before it
// written; StreamError when the session cannot be read or an output not be written.
void play(std::istream& session, const PlayOptions& options);

}  // namespace replay
