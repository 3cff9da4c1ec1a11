// Puts the messages of one thread about frames together to fillLscOISCompInfo calls. Where only the process is known,
// messages of several threads come mixed: then several calls may be open, and each message goes to the oldest one that
// it fits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>

#include "tools/replay/import/Capture.h"

namespace replay::import {

class FrameAssembler {
public:
    // `capture` must outlive the assembler. `oneThread`: every message is of one thread.
    FrameAssembler(Capture& capture, std::size_t thread, bool oneThread)
        : mCapture(capture), mThread(thread), mMaxOpen(oneThread ? 1 : 4) {}

    void take(const ExposureMode& mode, std::size_t line);
    // A message that stands twice on end: a doubled one, or that of another thread.
    void takeAgain(const ExposureMode& mode, std::size_t line);
    void take(const AlreadyWritten& written, std::size_t line);
    void take(const Timing& timing, std::size_t line);
    void take(const QueryStarted& query, std::size_t line);
    void take(const QueryEnded& query, std::size_t line);
    void take(const Calculation& calculation, std::size_t line);
    void take(const SampleUsed& used, std::size_t line);
    void take(const MatchFailed& failed, std::size_t line);
    void take(const Position& position, std::size_t line);
    void take(const ValuesFilled& filled, std::size_t line);
    // No more lines come.
    void finish();

private:
    struct Open {
        FrameCall call;
        std::size_t line = 0;
        bool queried = false;   // `line` is that of the first query
        bool doubtful = false;  // perhaps there is no such call
    };
    struct Query {
        std::size_t line = 0;
        std::optional<std::uint64_t> timestamp;
    };

    Open& open(std::size_t line);
    // The call that has got as far as its mode, or the end.
    std::list<Open>::iterator begun();
    void close(std::list<Open>::iterator call);
    // The newest exposure that waits for its result, or null.
    ExposureCall* waiting(std::int32_t sensor);
    // Where a result without its calculation's message belongs; null when nothing tells.
    ExposureCall* addMissing(std::int32_t sensor);

    Capture& mCapture;
    const std::size_t mThread;
    const std::size_t mMaxOpen;
    std::list<Open> mOpen;  // oldest first
    std::optional<Query> mQuery;
    std::optional<std::int32_t> mSensor;  // of the newest calculation
};

}  // namespace replay::import
