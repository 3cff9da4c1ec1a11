// The part of FrameAssembler that follows a calculation from its list of samples to its result.
#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/import/FrameAssembler.h"
#include "tools/import/Recalculation.h"
#include "tools/import/Votes.h"

namespace replay::import {
namespace {

using Outcome = Exposure::Outcome;

}  // namespace

template <typename Condition>
std::pair<FrameAssembler::Places::iterator, Exposure*> FrameAssembler::waiting(Condition condition) {
    const auto waits = [&condition](Place place) {
        const std::vector<Exposure>& exposures = frameOf(place).exposures;
        return !exposures.empty() && !exposures.back().isOver() && condition(exposures.back());
    };
    const auto frame = std::ranges::find_if(mOpen, waits);
    if (frame == mOpen.end()) return {frame, nullptr};
    Exposure& first = frameOf(*frame).exposures.back();
    first.contested = std::any_of(std::next(frame), mOpen.end(), waits);
    return {frame, &first};
}

void FrameAssembler::take(const SearchStep&, std::size_t line) {
    ++mStepsSeen;
    if (!isWaiting()) orphan(line);
}

void FrameAssembler::take(const SpanEntry& entry, std::size_t line) {
    ++mStepsSeen;
    const auto found =
        waiting([&](const Exposure& e) { return e.calculation && e.calculation->startUs == entry.startUs; });
    if (found.second == nullptr) return orphan(line);
    ++found.second->spanSeen;
}

void FrameAssembler::finish(Exposure& exposure) {
    const std::int32_t mode = exposure.mode;
    if (exposure.isListed()) {
        const lsc::Samples window = windowOf(exposure.listing);
        const Recalculation own = recalculate(*exposure.calculation, mode, window);
        mStepsDue += own.steps;
        // Where threads are not known, a result may be another frame's.
        const bool traced = mode == lsc::kMean || mode == lsc::kLargest;
        exposure.whole = exposure.outcome == Outcome::kNone ||
                         (mMostOpen == 1 && traced && exposure.spanSeen == own.span && mStepsSeen == mStepsDue);
        exposure.proven = exposure.outcome == Outcome::kPosition && own.position && isPrinted(exposure, *own.position);
    } else {
        mStepsKnown = false;
    }
    settle(exposure);
    vote(exposure, mTimeline);
    if (!isWaiting()) checkSteps();
}

// Between a calculation's first message and one that names its start again there is no other calculation of the thread.
// Without that, what follows a gap in the list may be another's.
void FrameAssembler::settle(Exposure& exposure) {
    if (exposure.outcome == Outcome::kNone || exposure.proven || exposure.spanSeen != 0) return;
    if (exposure.missing != 0) exposure.listing.resize(exposure.unbroken);
    exposure.trusted = exposure.outcome == Outcome::kUnknown;
}

void FrameAssembler::checkSteps() {
    // Where threads are not known, a doubled message may be that of another one.
    const std::size_t most = mStepsSeen + (mMostOpen == 1 ? 0 : mStepsDoubled);
    if (mStepsKnown && (mStepsDue < mStepsSeen || mStepsDue > most) && !mOpen.empty()) {
        const std::vector<Exposure>& exposures = frameOf(mOpen.back()).exposures;
        const std::size_t lost = mStepsDue > mStepsSeen ? mStepsDue - mStepsSeen : 0;
        std::string text = std::to_string(lost) + (lost == 1 ? " message" : " messages") + " of a calculation missing";
        if (lost == 0) text = "messages of a calculation do not fit together";
        mTimeline.doubt(exposures.empty() ? mOpen.back()->line : exposures.back().line, std::move(text));
    }
    resetSteps();
}

void FrameAssembler::resetSteps() {
    mStepsDue = mStepsSeen = mStepsDoubled = 0;
    mStepsKnown = true;
}

void FrameAssembler::take(const MatchFailed& failed, std::size_t line) {
    const auto [frame, exposure] = waiting([&](const Exposure& e) {
        return e.calculation && e.calculation->sensor == failed.sensor && e.calculation->type == failed.type &&
               e.calculation->startUs == static_cast<std::uint64_t>(failed.startUs);  // printed as a signed number
    });
    if (exposure == nullptr) {
        return mTimeline.doubt(line, "a calculation without a match; its beginning is not in the capture");
    }
    exposure->outcome = Outcome::kNone;
    exposure->frame = failed.frame;
    finish(*exposure);
    if (isLast(*exposure)) close(frame);
}

void FrameAssembler::take(const Position& position, std::size_t line) {
    const auto isIts = [&](const Exposure& e) { return e.calculation && e.calculation->sensor == position.sensor; };
    // Where threads are not known, the one whose span has been traced comes first.
    auto found = waiting([&](const Exposure& e) { return isIts(e) && e.spanSeen != 0; });
    if (found.second == nullptr) found = waiting(isIts);
    if (found.second == nullptr) {
        mTimeline.doubt(
            line, "a position of sensor " + std::to_string(position.sensor) + " without its calculation; left out");
        return;
    }
    Exposure& exposure = *found.second;
    exposure.outcome = Outcome::kPosition;
    exposure.frame = static_cast<std::uint32_t>(position.frame);  // printed as a signed number
    exposure.mode = position.mode;
    exposure.x = position.x.value;
    exposure.y = position.y.value;
    exposure.xText = position.x.text;
    exposure.yText = position.y.text;
    finish(exposure);
}

void FrameAssembler::take(const ValuesFilled& filled, std::size_t line) {
    const auto ends = [&filled](Place place) {
        const std::vector<Exposure>& exposures = frameOf(place).exposures;
        return !exposures.empty() && exposures.back().outcome == Outcome::kPosition && !exposures.back().filled &&
               exposures.back().calculation->type == static_cast<std::uint32_t>(filled.type);  // printed as signed
    };
    const auto found = std::ranges::find_if(mOpen, ends);
    if (found == mOpen.end()) {
        return mTimeline.doubt(line, "a position was written; which calculation's is not in the capture");
    }
    Exposure& exposure = frameOf(*found).exposures.back();
    exposure.filled = true;
    if (isLast(exposure)) close(found);
}

}  // namespace replay::import
