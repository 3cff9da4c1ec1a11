// Reads a logcat capture line by line: records to events, events of each thread to calls in a timeline.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tools/import/Events.h"
#include "tools/import/LogLine.h"
#include "tools/import/RepeatFilter.h"
#include "tools/import/Silence.h"
#include "tools/import/Timeline.h"

namespace replay::import {

// What the lines are, as far as they have been read.
struct CaptureFacts {
    std::size_t lines = 0;
    std::size_t ownLines = 0;        // messages of the library, from the process that is imported
    std::size_t doubledLines = 0;    // of those
    std::size_t repeatedLines = 0;   // of those, after the recording had been interrupted
    std::size_t refused = 0;         // calls for a sensor that the library refuses
    std::int32_t refusedSensor = 0;  // of the first of them
    std::size_t bareLines = 0;       // messages of the library without a tag
    std::optional<std::uint32_t> pid;
    std::map<std::uint32_t, std::size_t> otherProcesses;  // library lines of each
    bool sawThreads = false;                              // the form names threads
    bool sawSamples = false;                              // messages that log level 4 lets through
    bool sawListings = false;                             // ... level 3
    bool sawHandOvers = false;                            // ... any level but 0
    bool sawFrames = false;
};

class CaptureReader {
public:
    // Lines of the library from another process than `pid` are left out; without one, from another process than that
    // of the first. `timeline` must outlive the reader.
    CaptureReader(Timeline& timeline, std::optional<std::uint32_t> pid);
    ~CaptureReader();

    // The next line, without its end.
    void add(std::string_view line);
    // No line follows: every call is complete.
    void finish();

    const CaptureFacts& facts() const { return mFacts; }

private:
    struct Lane;

    bool isOurs(const LogLine& line);
    void addForeign(std::string_view line, const std::optional<LogLine>& record);
    void addChatty(const LogLine& line);
    void repeatLast(Lane& lane, std::uint64_t times);
    void addMessage(const LogLine& line);
    void addEvent(const Event& event, Lane& lane);
    void addDoubled(const Event& event, Lane& lane);
    bool isRepeated(const LogLine& line);
    void tellLate();
    void listen(const Event& event, std::string_view clock);
    void watchTimes(const BatchUpdated& batch);
    void letGo();
    Lane& laneOf(const LogLine& line);

    Timeline& mTimeline;
    CaptureFacts mFacts;
    LogParser mParser;
    std::map<std::uint32_t, std::unique_ptr<Lane>> mLanes;  // by thread id, or by process id where none is known
    Lane* mLastLane = nullptr;
    std::uint32_t mLastId = 0;
    std::uint64_t mNewestNs = 0;  // of the samples handed over, where lines have no clock
    bool mDoubles = false;        // the log prints lines twice
    RepeatFilter mRepeats;
    std::size_t mLate = 0;  // lines in a row, among repeated ones, that were not there before
    std::size_t mFirstLate = 0;
    Silence mSilence;
};

}  // namespace replay::import
