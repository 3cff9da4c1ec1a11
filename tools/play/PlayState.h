// What lasts from line to line of a session: the metadata objects by name, the hook instances by index, and the
// recording of what the library logs. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "platform/Metadata.h"
#include "platform/host/Journal.h"
#include "tools/diagnose/Library.h"
#include "tools/diagnose/Watch.h"
#include "tools/play/LogRecorder.h"

namespace replay {

class PlayState {
public:
    // With `echo`, what the library logs is printed there; `keepsLog` keeps it for takeLog(). `observers` hear what
    // happens. `echo` and they must outlive it.
    PlayState(std::ostream* echo, bool keepsLog, const std::vector<Observer*>& observers)
        : mRecorder(echo, keepsLog), mWatch(observers, mLibrary) {}

    // Puts `metadata` in place of an earlier object of that name; `size` is as kMaxMetadataSize counts, and within
    // metadataRoom(). Objects are kept for the whole session.
    void putMetadata(const std::string& name, std::unique_ptr<NSCam::IMetadata> metadata, std::uint64_t size);
    // The size that an object of that name may have.
    std::uint64_t metadataRoom(const std::string& name) const;
    // Null for a name that no line made.
    NSCam::IMetadata* findMetadata(const std::string& name) const;

    void putInstance(std::int32_t index, CustomShadingFlow* instance) { mInstances[index] = instance; }
    // Null for an index that has none.
    CustomShadingFlow* findInstance(std::int32_t index) const;

    // The function that the calls into the library stand for from now on.
    void beginCall(std::string function) { mFunction = std::move(function); }
    // Runs a call into the library, records what it logs, tells what it cost and gives its result. Nothing else may be
    // inside.
    template <typename Call>
    auto inLibrary(Call&& call) {
        mLibrary.noteSettings();
        const PlatformOfACall platform(*this);
        const Stopwatch stopwatch(*this);
        return mRecorder.record(std::forward<Call>(call));
    }
    std::vector<host::LogEntry> takeLog() { return mRecorder.take(); }

    // Whether calls get a journal.
    void setJournal(bool on) { mJournalOn = on; }
    // That of the last call; nothing without one.
    std::optional<std::vector<host::JournalEntry>> takeJournal() { return std::exchange(mJournal, std::nullopt); }

    // Ends the monitors that the session leaves behind, so that a replay of the same session finds none.
    void endMonitors();

    Library& subject() { return mLibrary; }
    TarvoShadingCustomUtil& customer() { return mLibrary.customer(); }
    Watch& watch() { return mWatch; }

private:
    // Lets the platform fail and keep a journal for its own life: what the player asks is no part of the session.
    class PlatformOfACall {
    public:
        explicit PlatformOfACall(PlayState& state);
        ~PlatformOfACall();
        PlatformOfACall(const PlatformOfACall&) = delete;
        PlatformOfACall& operator=(const PlatformOfACall&) = delete;

    private:
        PlayState& mState;
    };

    // Tells the time of its own life.
    class Stopwatch {
    public:
        explicit Stopwatch(PlayState& state) : mState(state) {}
        ~Stopwatch();
        Stopwatch(const Stopwatch&) = delete;
        Stopwatch& operator=(const Stopwatch&) = delete;

    private:
        using Clock = std::chrono::steady_clock;

        PlayState& mState;
        const Clock::time_point mStart = Clock::now();
    };

    struct KeptMetadata {
        std::unique_ptr<NSCam::IMetadata> object;
        std::uint64_t size = 0;
    };
    std::map<std::string, KeptMetadata> mMetadata;
    std::uint64_t mMetadataSize = 0;  // of all
    std::map<std::int32_t, CustomShadingFlow*> mInstances;
    std::string mFunction;
    LogRecorder mRecorder;
    bool mJournalOn = false;
    std::optional<std::vector<host::JournalEntry>> mJournal;
    Library mLibrary;
    Watch mWatch;
};

}  // namespace replay
