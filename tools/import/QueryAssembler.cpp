#include "tools/import/QueryAssembler.h"

#include <algorithm>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay::import {
namespace {

bool isAskedBy(const Query& query, const Calculation& calculation) {
    if (!query.answered) return true;  // nothing speaks against it
    return query.answered->timestamp / lsc::kNsPerUs == calculation.startUs + calculation.exposureUs &&
           query.answered->count == calculation.count;
}

}  // namespace

Query& QueryAssembler::queryOf(Timeline::Place place) {
    return *std::get<Frame>(place->data).exposures.front().query;
}

void QueryAssembler::drop(std::size_t index) {
    Timeline::close(mWaiting[index]);
    mWaiting.erase(mWaiting.begin() + static_cast<std::ptrdiff_t>(index));  // an index within
}

Query& QueryAssembler::begin(std::size_t line) {
    if (mWaiting.size() == mMost) drop(0);
    Frame frame;
    frame.lane = mLane;
    frame.exposures.emplace_back().query.emplace().line = line;
    mWaiting.push_back(mTimeline.add(line, std::move(frame), true));
    return queryOf(mWaiting.back());
}

Query& QueryAssembler::current(std::size_t line) {
    return mWaiting.empty() || queryOf(mWaiting.back()).ended ? begin(line) : queryOf(mWaiting.back());
}

void QueryAssembler::take(const QueryStarted& query, std::size_t line) {
    begin(line).total = query.total;
}

void QueryAssembler::take(const Matched& matched, std::size_t line) {
    Query& query = current(line);
    (query.matched || query.answered ? begin(line) : query).matched = matched;
}

void QueryAssembler::take(const NothingMatched&, std::size_t line) {
    Query& query = current(line);
    (query.matched || query.answered ? begin(line) : query).nothing = true;
}

void QueryAssembler::take(const QueryAnswered& answered, std::size_t line) {
    Query& query = current(line);
    (query.answered ? begin(line) : query).answered = answered;
}

void QueryAssembler::take(const QueryEnded&, std::size_t line) {
    current(line).ended = true;
}

std::optional<Timeline::Place> QueryAssembler::claim(const Calculation& calculation) {
    const auto isIts = [&](Timeline::Place place) { return isAskedBy(queryOf(place), calculation); };
    const auto found = std::ranges::find_if(mWaiting, isIts);
    if (found == mWaiting.end()) return std::nullopt;
    const Timeline::Place place = *found;
    mWaiting.erase(found);
    return place;
}

void QueryAssembler::letGo() {
    while (!mWaiting.empty())
        drop(0);
}

}  // namespace replay::import
