// Puts the messages of one thread about frames together to fillLscOISCompInfo calls. Where only the process is known,
// messages of several threads come mixed: then several calls may be open, and each message goes to one that expects it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "tools/import/QueryAssembler.h"
#include "tools/import/Timeline.h"

namespace replay::import {

class FrameAssembler {
public:
    // `timeline` must outlive the assembler. `oneThread`: every message is of one thread.
    FrameAssembler(Timeline& timeline, std::size_t lane, bool oneThread);

    void take(const ExposureMode& mode, std::size_t line);
    // A message that equals the one before: a doubled one, or that of another thread.
    void takeAgain(const ExposureMode& mode, std::size_t line);
    void takeAgain(const SearchStep&, std::size_t) { ++mStepsDoubled; }
    void take(const AlreadyWritten& written, std::size_t line);
    void take(const Timing& timing, std::size_t line);
    void take(const Calculation& calculation, std::size_t line);
    void take(const SampleUsed& used, std::size_t line);
    void take(const SearchStep& step, std::size_t line);
    void take(const SpanEntry& entry, std::size_t line);
    void take(const MatchFailed& failed, std::size_t line);
    void take(const Position& position, std::size_t line);
    void take(const ValuesFilled& filled, std::size_t line);
    QueryAssembler& queries() { return mQueries; }
    // No more messages of its calls come.
    void letGo();

private:
    using Place = Timeline::Place;
    using Places = std::vector<Place>;

    static Frame& frameOf(Place place) { return std::get<Frame>(place->data); }
    // Whether its frame has no exposure after it.
    static bool isLast(const Exposure& exposure) { return exposure.calculation->type != 5; }

    Place open(std::size_t line);
    void close(Places::iterator frame);
    Places::iterator begun();
    Place placeFor(const Calculation& calculation, std::size_t line);
    Exposure* listingOf(const SampleUsed& used);
    void finish(Exposure& exposure);
    static void settle(Exposure& exposure);
    void checkSteps();
    void resetSteps();
    bool isWaiting() const;
    void orphan(std::size_t line);

    // The first exposure that waits for its result and for which the condition holds, with its frame; or null.
    template <typename Condition>
    std::pair<Places::iterator, Exposure*> waiting(Condition condition);

    Timeline& mTimeline;
    const std::size_t mLane;
    const std::size_t mMostOpen;
    QueryAssembler mQueries;
    Places mOpen;               // oldest first
    std::size_t mStepsDue = 0;  // messages of calculations that do not name theirs
    std::size_t mStepsSeen = 0;
    std::size_t mStepsDoubled = 0;
    bool mStepsKnown = true;  // of all calculations since there was none open
    bool mOrphaned = false;   // the calculation that messages belong to is not in the capture; said once
};

}  // namespace replay::import
