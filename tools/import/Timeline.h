// The calls of a capture in order, those of the last moments alone: each waits until enough hand-overs have followed
// for what later messages tell of it.
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <utility>

#include "tools/import/Calls.h"

namespace replay::import {

class Timeline {
public:
    // Hand-overs that a call waits for. Calculations list a sample for some frames; this is several for each of a
    // phone's cameras.
    static constexpr std::size_t kLookAhead = 64;
    // Calls that may wait in all.
    static constexpr std::size_t kMostCalls = 8 * kLookAhead;

    using Place = std::list<Call>::iterator;

    // A call at the end. `open`: messages of it may follow; it waits for close().
    Place add(std::size_t line, CallData data, bool open = false);
    void doubt(std::size_t line, std::string text) { add(line, Doubt{std::move(text)}); }

    // Puts an open call where another open one is, which goes.
    void replace(Place other, Place call);
    // Puts an open call at the end: what came last belongs to it.
    void moveToEnd(Place call, std::size_t line) {
        call->line = line;
        mCalls.splice(mCalls.end(), mCalls, call);
    }
    // The call is complete; it may be gone from now on.
    static void close(Place call) { call->open = false; }
    // Takes an open call out again.
    void remove(Place call) { mCalls.erase(call); }

    // Whether too many calls wait: open ones must be closed.
    bool isFull() const { return mCalls.size() > kMostCalls; }
    // Whether the first call has waited long enough; `all`: no more calls come.
    bool isReady(bool all) const;
    // Takes the first call.
    Call take();

    // The calls that follow the one taken last.
    const std::list<Call>& calls() const { return mCalls; }
    std::list<Call>& calls() { return mCalls; }

private:
    std::list<Call> mCalls;
    std::size_t mHandOvers = 0;
};

}  // namespace replay::import
