#include "tools/replay/import/FrameAssembler.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "tools/replay/import/BatchAssembler.h"

namespace replay::import {
namespace {

using Outcome = ExposureCall::Outcome;

constexpr std::uint64_t kNsPerUs = 1000;

// Whether the calculation is one of the frame's exposures, by its times.
bool fits(const Timing& timing, const Calculation& c) {
    const auto same = [&c](std::uint64_t sof, std::uint64_t exposure) {
        return exposure / kNsPerUs == c.exposureUs && sof / kNsPerUs - c.exposureUs == c.startUs;
    };
    if (c.type == 1) return same(timing.sof, timing.exposure);
    if (c.type == 5) return same(timing.sofNe, timing.exposureNe);
    return c.type == 6 && same(timing.sofSe, timing.exposureSe);
}

bool fits(const FrameCall& call, const Calculation& c) {
    const auto taken = [&c](const ExposureCall& exposure) { return exposure.calculation.type >= c.type; };
    if (call.written || std::ranges::any_of(call.exposures, taken)) return false;
    if (call.sensor && *call.sensor != c.sensor) return false;
    if (call.multi && *call.multi != (c.type == 5 || c.type == 6)) return false;
    if (call.timing) return fits(*call.timing, c);
    // Calculations without a frame are each on their own.
    return call.exposures.empty() || (call.exposures.back().calculation.type == 5 && c.type == 6);
}

// The type of the exposure that follows those known; 0 when there is none.
std::uint32_t nextType(const FrameCall& call) {
    if (!call.multi.value_or(false)) return call.exposures.empty() ? 1 : 0;
    if (call.exposures.empty()) return 5;
    return call.exposures.back().calculation.type == 5 ? 6 : 0;
}

}  // namespace

FrameAssembler::Open& FrameAssembler::open(std::size_t line) {
    while (mOpen.size() >= mMaxOpen)
        close(mOpen.begin());
    mOpen.push_back({{}, line, false, false});
    mOpen.back().call.thread = mThread;
    return mOpen.back();
}

std::list<FrameAssembler::Open>::iterator FrameAssembler::begun() {
    const auto isBegun = [](const Open& o) { return !o.call.timing && o.call.exposures.empty() && !o.call.written; };
    const auto sure = std::ranges::find_if(mOpen, [&](const Open& o) { return isBegun(o) && !o.doubtful; });
    return sure != mOpen.end() ? sure : std::ranges::find_if(mOpen, isBegun);
}

void FrameAssembler::close(std::list<Open>::iterator call) {
    if (!call->doubtful) mCapture.add(call->line, std::move(call->call));
    mOpen.erase(call);
}

void FrameAssembler::take(const ExposureMode& mode, std::size_t line) {
    open(line).call.multi = mode.multi != 0;
}

void FrameAssembler::takeAgain(const ExposureMode& mode, std::size_t line) {
    if (mMaxOpen == 1) return;
    take(mode, line);
    mOpen.back().doubtful = true;
}

void FrameAssembler::take(const AlreadyWritten&, std::size_t line) {
    auto found = begun();
    if (found == mOpen.end()) {
        open(line);
        found = std::prev(mOpen.end());
    }
    found->call.written = true;
    found->doubtful = false;
    close(found);
}

void FrameAssembler::take(const Timing& timing, std::size_t line) {
    const auto found = begun();
    Open& frame = found != mOpen.end() ? *found : open(line);
    frame.call.timing = timing;
    frame.doubtful = false;
}

void FrameAssembler::take(const QueryStarted&, std::size_t line) {
    mQuery = Query{line, {}};
}

void FrameAssembler::take(const QueryEnded& query, std::size_t line) {
    if (!mQuery) mQuery = Query{line, {}};
    mQuery->timestamp = query.timestamp;
}

void FrameAssembler::take(const Calculation& calculation, std::size_t line) {
    const Query query = std::exchange(mQuery, std::nullopt).value_or(Query{line, {}});
    const auto isIts = [&](const Open& o) { return !o.doubtful && fits(o.call, calculation); };
    auto found = std::ranges::find_if(mOpen, [&](const Open& o) { return o.call.timing && isIts(o); });
    if (found == mOpen.end()) found = std::ranges::find_if(mOpen, isIts);
    Open& frame = found != mOpen.end() ? *found : open(line);
    if (!std::exchange(frame.queried, true)) frame.line = query.line;
    frame.call.sensor = calculation.sensor;
    mSensor = calculation.sensor;
    ExposureCall exposure;
    exposure.calculation = calculation;
    exposure.timestamp = query.timestamp;
    // Without samples the calculation ends here.
    if (calculation.count == 0) exposure.outcome = Outcome::kNone;
    frame.call.exposures.push_back(std::move(exposure));
}

void FrameAssembler::take(const SampleUsed& used, std::size_t) {
    if (!mSensor) return;
    const auto found = mCapture.newestSamples.find(sampleHash(used.timeUs, used.x, used.y));
    if (found == mCapture.newestSamples.end()) return;
    // Only places of such calls stand in the table.
    UpdateCall& batch = std::get<UpdateCall>(mCapture.calls[found->second].data);
    if (!batch.sensor) batch.sensor = mSensor;
}

ExposureCall* FrameAssembler::waiting(std::int32_t sensor) {
    for (auto frame = mOpen.rbegin(); frame != mOpen.rend(); ++frame) {
        if (frame->call.exposures.empty() || frame->call.sensor != sensor) continue;
        ExposureCall& exposure = frame->call.exposures.back();
        if (exposure.outcome == Outcome::kUnknown && exposure.x.empty()) return &exposure;
    }
    return nullptr;
}

ExposureCall* FrameAssembler::addMissing(std::int32_t sensor) {
    if (mOpen.size() != 1 || !mOpen.front().call.timing) return nullptr;
    FrameCall& call = mOpen.front().call;
    const std::uint32_t type = nextType(call);
    if (type == 0 || call.sensor.value_or(sensor) != sensor) return nullptr;
    call.sensor = sensor;
    ExposureCall& exposure = call.exposures.emplace_back();
    exposure.calculation.sensor = sensor;
    exposure.calculation.type = type;
    return &exposure;
}

void FrameAssembler::take(const MatchFailed& failed, std::size_t) {
    ExposureCall* exposure = waiting(failed.sensor);
    if (exposure == nullptr) exposure = addMissing(failed.sensor);
    if (exposure != nullptr) exposure->outcome = Outcome::kNone;
}

void FrameAssembler::take(const Position& position, std::size_t line) {
    mCapture.calculationMode = position.mode;
    ExposureCall* exposure = waiting(position.sensor);
    if (exposure == nullptr) exposure = addMissing(position.sensor);
    if (exposure == nullptr) {
        mCapture.addHole(
            line, "a position of sensor " + std::to_string(position.sensor) + " stands without its frame; left out");
        return;
    }
    exposure->outcome = Outcome::kPosition;
    exposure->frame = position.frame;
    exposure->x = position.x.text;
    exposure->y = position.y.text;
}

void FrameAssembler::take(const ValuesFilled& filled, std::size_t) {
    if (filled.type != 1 && filled.type != 6) return;  // another exposure follows
    const auto ends = [&filled](const Open& o) {
        return !o.call.exposures.empty() && o.call.exposures.back().outcome == Outcome::kPosition &&
               o.call.exposures.back().calculation.type == static_cast<std::uint32_t>(filled.type);
    };
    const auto found = std::ranges::find_if(mOpen, ends);
    if (found != mOpen.end()) close(found);
}

void FrameAssembler::finish() {
    while (!mOpen.empty())
        close(mOpen.begin());
}

}  // namespace replay::import
