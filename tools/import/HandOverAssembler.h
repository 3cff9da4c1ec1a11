// Puts the messages of one thread about sample batches together to hand-overs. One is open at most: the library makes
// them under a lock, so their messages never mix, even where threads are not known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>

#include "tools/import/Timeline.h"

namespace replay::import {

class HandOverAssembler {
public:
    // `timeline` must outlive the assembler.
    HandOverAssembler(Timeline& timeline, std::size_t lane) : mTimeline(timeline), mLane(lane) {}

    void take(const SampleReceived& sample, std::size_t line);
    void take(const BatchDivided& divided, std::size_t line);
    void take(const BatchFiled& filed, std::size_t line);
    void take(const BatchUpdated& updated, std::size_t line);
    void take(const BatchEmpty& empty, std::size_t line);
    // No more of its messages come.
    void letGo();

private:
    HandOver& open(std::size_t line);
    HandOver* batch() const { return mOpen ? &std::get<HandOver>((*mOpen)->data) : nullptr; }  // the open one
    void closeUnlessFrame(std::uint32_t frame);

    Timeline& mTimeline;
    const std::size_t mLane;
    std::optional<Timeline::Place> mOpen;  // where its last message stands
    std::size_t mNextIndex = 0;            // of a sample
};

}  // namespace replay::import
