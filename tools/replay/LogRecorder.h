// What the library logs during its calls, and the switches that decide how much that is.
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "platform/host/Host.h"

namespace replay {

// The unified logger's three switches.
struct LogSwitches {
    std::int32_t mode = 0;
    std::uint32_t detailsLevel = 0;
    std::uint32_t detailsMask = 0;
};

// Closes the log gates for its own life and puts them back as they were.
class ClosedLogGates {
public:
    explicit ClosedLogGates(const LogSwitches& before) : mBefore(before) { host::setLogSwitches(0, 0, 0); }
    ~ClosedLogGates() { host::setLogSwitches(mBefore.mode, mBefore.detailsLevel, mBefore.detailsMask); }
    ClosedLogGates(const ClosedLogGates&) = delete;
    ClosedLogGates& operator=(const ClosedLogGates&) = delete;

private:
    const LogSwitches mBefore;
};

// The host's log sink while it lives. Keeps what is logged inside record(), drops everything else.
class LogRecorder {
public:
    // With `echo`, everything recorded is also printed there, in the manner of logcat's brief format.
    explicit LogRecorder(std::ostream* echo);
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    // Runs `call` and gives its result; what it logs is kept.
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
    bool mRecording = false;
    std::vector<host::LogEntry> mEntries;
};

}  // namespace replay
