#include "tools/import/FrameAssembler.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay::import {
namespace {

using Outcome = Exposure::Outcome;

constexpr std::size_t kMostThreads = 8;  // of a process whose frames are computed at once

// Whether the calculation is one of the frame's exposures, by its times.
bool fits(const Timing& timing, const Calculation& c) {
    const auto same = [&c](std::uint64_t sof, std::uint64_t exposure) {
        return exposure / lsc::kNsPerUs == c.exposureUs && sof / lsc::kNsPerUs - c.exposureUs == c.startUs;
    };
    if (c.type == 1) return same(timing.sof, timing.exposure);
    if (c.type == 5) return same(timing.sofNe, timing.exposureNe);
    return c.type == 6 && same(timing.sofSe, timing.exposureSe);
}

bool fits(const Frame& frame, const Calculation& c) {
    const auto taken = [&c](const Exposure& e) { return !e.calculation || e.calculation->type >= c.type; };
    if (frame.written || frame.doubtful || std::ranges::any_of(frame.exposures, taken)) return false;
    if (frame.sensor() && *frame.sensor() != c.sensor) return false;
    if (frame.multi && *frame.multi != (c.type == 5 || c.type == 6)) return false;
    if (frame.timing) return fits(*frame.timing, c);
    // Calculations without a frame are each on their own.
    return frame.exposures.empty() ? frame.multi.has_value()
                                   : c.type == 6 && frame.exposures.back().calculation->type == 5;
}

}  // namespace

FrameAssembler::FrameAssembler(Timeline& timeline, std::size_t lane, bool oneThread)
    : mTimeline(timeline),
      mLane(lane),
      mMostOpen(oneThread ? 1 : kMostThreads),
      mQueries(timeline, lane, oneThread ? 1 : kMostThreads) {}

bool FrameAssembler::isWaiting() const {
    return std::ranges::any_of(mOpen, [](Place place) {
        const std::vector<Exposure>& exposures = frameOf(place).exposures;
        return !exposures.empty() && !exposures.back().isOver();
    });
}

FrameAssembler::Place FrameAssembler::open(std::size_t line) {
    while (mOpen.size() >= mMostOpen)
        close(mOpen.begin());
    Frame frame;
    frame.lane = mLane;
    mOpen.push_back(mTimeline.add(line, std::move(frame), true));
    return mOpen.back();
}

void FrameAssembler::close(Places::iterator frame) {
    std::vector<Exposure>& exposures = frameOf(*frame).exposures;
    if (!exposures.empty() && !exposures.back().isOver()) {
        mStepsKnown = false;
        settle(exposures.back());
    }
    if (frameOf(*frame).doubtful) {
        mTimeline.remove(*frame);
    } else {
        Timeline::close(*frame);
    }
    mOpen.erase(frame);
    if (!isWaiting()) checkSteps();
}

FrameAssembler::Places::iterator FrameAssembler::begun() {
    const auto isBegun = [](Place place) {
        const Frame& frame = frameOf(place);
        return !frame.timing && frame.exposures.empty() && !frame.written;
    };
    const auto sure = std::ranges::find_if(mOpen, [&](Place p) { return isBegun(p) && !frameOf(p).doubtful; });
    return sure != mOpen.end() ? sure : std::ranges::find_if(mOpen, isBegun);
}

// ---- The frame

void FrameAssembler::take(const ExposureMode& mode, std::size_t line) {
    frameOf(open(line)).multi = mode.multi != 0;
}

void FrameAssembler::takeAgain(const ExposureMode& mode, std::size_t line) {
    if (mMostOpen == 1) return;
    take(mode, line);
    frameOf(mOpen.back()).doubtful = true;
}

void FrameAssembler::take(const AlreadyWritten&, std::size_t line) {
    auto found = begun();
    if (found == mOpen.end()) {
        open(line);
        found = std::prev(mOpen.end());
    }
    frameOf(*found).written = true;
    frameOf(*found).doubtful = false;
    close(found);
}

void FrameAssembler::take(const Timing& timing, std::size_t line) {
    const auto found = begun();
    Frame& frame = frameOf(found != mOpen.end() ? *found : open(line));
    frame.timing = timing;
    frame.doubtful = false;
}

// ---- A calculation

FrameAssembler::Place FrameAssembler::placeFor(const Calculation& calculation, std::size_t line) {
    const auto isIts = [&](Place place) { return fits(frameOf(place), calculation); };
    auto found = std::ranges::find_if(mOpen, [&](Place p) { return frameOf(p).timing && isIts(p); });
    if (found == mOpen.end()) found = std::ranges::find_if(mOpen, isIts);
    const std::optional<Place> query = mQueries.claim(calculation);
    std::optional<Query> asked;
    if (query) asked = std::move(frameOf(*query).exposures.front().query);
    Place place;
    if (found != mOpen.end()) {
        place = *found;
        if (query && frameOf(place).exposures.empty()) {
            mTimeline.replace(*query, place);
        } else if (query) {
            mTimeline.remove(*query);
        }
    } else {
        // It waits behind its query, where there is one.
        place = open(line);
        if (query) mTimeline.replace(*query, place);
    }
    frameOf(place).exposures.emplace_back().query = std::move(asked);
    return place;
}

void FrameAssembler::take(const Calculation& calculation, std::size_t line) {
    mOrphaned = false;
    const bool first = !isWaiting();
    const Place place = placeFor(calculation, line);
    if (mMostOpen == 1 || first) resetSteps();
    Exposure& exposure = frameOf(place).exposures.back();
    exposure.calculation = calculation;
    exposure.line = line;
    exposure.listing.reserve(std::min<std::size_t>(calculation.count, lsc::ActiveSamples::kCapacity));
    if (calculation.count != 0) return;
    // Without samples the calculation ends here.
    exposure.outcome = Outcome::kNone;
    exposure.whole = true;
    if (isLast(exposure)) close(std::ranges::find(mOpen, place));
}

Exposure* FrameAssembler::listingOf(const SampleUsed& used) {
    const auto next = [](const Exposure& e) { return e.listing.size() + e.missing; };
    Exposure* best = nullptr;
    double bestDistance = 0;
    for (const Place place : mOpen) {
        std::vector<Exposure>& exposures = frameOf(place).exposures;
        if (exposures.empty() || exposures.back().isOver()) continue;
        Exposure& e = exposures.back();
        if (used.index < next(e) || used.index >= e.calculation->count) continue;
        if (!e.listing.empty() && used.timeUs < e.listing.back().timeUs) continue;
        if (best != nullptr && next(*best) != next(e)) {  // the one that expects just this index
            if (next(e) > next(*best)) best = &e;
            continue;
        }
        double distance = 0;
        if (!e.listing.empty()) {
            const Listed& last = e.listing.back();
            distance = std::abs(used.x.value - static_cast<double>(last.x)) +
                       std::abs(used.y.value - static_cast<double>(last.y));
        }
        if (best != nullptr && !(distance < bestDistance)) continue;
        best = &e;
        bestDistance = distance;
    }
    return best;
}

void FrameAssembler::take(const SampleUsed& used, std::size_t line) {
    Exposure* const exposure = listingOf(used);
    if (exposure == nullptr) return orphan(line);
    if (exposure->missing == 0) exposure->unbroken = exposure->listing.size();
    exposure->missing += used.index - exposure->listing.size() - exposure->missing;
    exposure->listing.push_back({used.timeUs, static_cast<float>(used.x.value), static_cast<float>(used.y.value)});
}

void FrameAssembler::orphan(std::size_t line) {
    if (mOrphaned) return;
    mOrphaned = true;
    mTimeline.doubt(line, "messages of a calculation whose beginning is not in the capture");
}

void FrameAssembler::letGo() {
    mQueries.letGo();
    while (!mOpen.empty())
        close(mOpen.begin());
}

}  // namespace replay::import
