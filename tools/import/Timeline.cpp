#include "tools/import/Timeline.h"

#include <variant>

namespace replay::import {

Timeline::Place Timeline::add(std::size_t line, CallData data, bool open) {
    if (std::holds_alternative<HandOver>(data)) ++mHandOvers;
    mCalls.push_back({line, open, std::move(data)});
    return std::prev(mCalls.end());
}

void Timeline::replace(Place other, Place call) {
    call->line = other->line;
    mCalls.splice(other, mCalls, call);
    mCalls.erase(other);
}

bool Timeline::isReady(bool all) const {
    if (mCalls.empty()) return false;
    return all || (!mCalls.front().open && (mHandOvers > kLookAhead || isFull()));
}

Call Timeline::take() {
    Call call = std::move(mCalls.front());
    mCalls.pop_front();
    if (std::holds_alternative<HandOver>(call.data)) --mHandOvers;
    return call;
}

}  // namespace replay::import
