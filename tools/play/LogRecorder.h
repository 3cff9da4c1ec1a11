// What the library logs during its calls.
#pragma once

#include <ostream>
#include <vector>

#include "platform/host/Host.h"

namespace replay {

// The host's log sink while it lives, if anybody wants the log. Takes what is logged inside record(), drops everything
// else.
class LogRecorder {
public:
    // With `echo`, everything recorded is printed there, in the manner of logcat's brief format; with `keeps`, it is
    // kept for take().
    LogRecorder(std::ostream* echo, bool keeps);
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    // Runs `call` and gives its result; what it logs is taken.
    template <typename Call>
    auto record(Call&& call) {
        const Window window(mRecording);
        return call();
    }

    // What was kept since the last take().
    std::vector<host::LogEntry> take();

private:
    class Window {
    public:
        explicit Window(bool& open) : mOpen(open) { mOpen = true; }
        ~Window() { mOpen = false; }
        Window(const Window&) = delete;
        Window& operator=(const Window&) = delete;

    private:
        bool& mOpen;
    };

    void receive(const host::LogEntry& entry);

    std::ostream* const mEcho;
    const bool mKeeps;
    bool mRecording = false;
    std::vector<host::LogEntry> mEntries;
};

}  // namespace replay
