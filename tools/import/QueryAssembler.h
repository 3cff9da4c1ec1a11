// Puts the messages of one thread about queries for samples together. The library answers queries under a lock, so the
// messages of two never mix; the calculation that asked follows later.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tools/import/Timeline.h"

namespace replay::import {

class QueryAssembler {
public:
    // At most `most` queries wait for their calculation. `timeline` must outlive the assembler.
    QueryAssembler(Timeline& timeline, std::size_t lane, std::size_t most)
        : mTimeline(timeline), mLane(lane), mMost(most) {}

    void take(const QueryStarted& query, std::size_t line);
    void take(const Matched& matched, std::size_t line);
    void take(const NothingMatched& nothing, std::size_t line);
    void take(const QueryAnswered& query, std::size_t line);
    void take(const QueryEnded& query, std::size_t line);

    // The open call that holds the query of this calculation alone, which is now the caller's.
    std::optional<Timeline::Place> claim(const Calculation& calculation);
    // The queries that wait are of no calculation.
    void letGo();

private:
    Query& begin(std::size_t line);
    Query& current(std::size_t line);
    static Query& queryOf(Timeline::Place place);
    void drop(std::size_t index);

    Timeline& mTimeline;
    const std::size_t mLane;
    const std::size_t mMost;
    std::vector<Timeline::Place> mWaiting;  // oldest first
};

}  // namespace replay::import
