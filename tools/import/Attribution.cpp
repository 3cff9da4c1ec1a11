#include "tools/import/Attribution.h"

#include <algorithm>
#include <cmath>

#include "customer/aaa/aaa/lsc/SampleQueue.h"

namespace replay::import {
namespace {

using NSCam::Utils::SensorData;

// Weights of the signs that a hand-over does not continue another; a step of one sample period, or four times the usual
// movement between two samples, weighs 1.
constexpr double kOtherFrame = 2;
constexpr double kOtherQueue = 3;
constexpr double kOtherThread = 1;
constexpr double kMost = 10;
constexpr double kContinues = 1.5;  // not farther than this
constexpr double kClear = 0.5;      // nearer than the next best by this much

// With more monitors than this, far more than a device has cameras, the choice is among the first ones, and not sure:
// the time that a capture takes must not grow with their square.
constexpr std::size_t kMostCandidates = 64;

double movement(const SensorData& a, const SensorData& b) {
    return std::abs(static_cast<double>(a.oisX) - static_cast<double>(b.oisX)) +
           std::abs(static_cast<double>(a.oisY) - static_cast<double>(b.oisY));
}

double between(const SensorData& a, const SensorData& b) {
    return static_cast<double>(b.timestamp) - static_cast<double>(a.timestamp);
}

bool equal(const SensorData& a, const SensorData& b) {
    return a.timestamp == b.timestamp && !(movement(a, b) > 0);
}

double capped(double value) {
    return std::isfinite(value) ? std::min(value, kMost) : kMost;
}

std::size_t framesHeld(const HandOver& batch) {
    return batch.updated ? batch.updated->queue : 0;
}

// How little a hand-over is like the first one of a monitor.
double distanceToFirst(const HandOver& batch) {
    return batch.updated && batch.updated->queue > 1 ? kMost : kContinues;
}

}  // namespace

// ---- Tracks

void Attribution::Track::follow(const HandOver& batch) {
    begun = true;
    lane = batch.lane;
    if (batch.emptyType) {
        ++empty;
        return;
    }
    if (const std::int64_t skip = skipped(batch); empty == 0 && frame) {
        // Twice in a row: a hand-over without samples, taken for another sensor's, skips a number, too.
        usualSkip = std::max<std::int64_t>(std::min(skip, lastSkip), 0);
        lastSkip = skip;
    }
    empty = 0;
    frame = batch.frame();
    queue = framesHeld(batch);
    if (batch.samples.empty() || batch.isUnfiled()) return;
    samples = batch.samples;
    lsc::sortByTime(samples);
    if (samples.size() < 2) return;
    periodNs = between(samples.front(), samples.back()) / static_cast<double>(samples.size() - 1);
}

double Attribution::Track::sampleDistance(lsc::Samples next) const {
    if (samples.empty() || next.empty()) return 0;
    lsc::sortByTime(next);
    const SensorData& last = samples.back();
    if (std::ranges::any_of(next, [&](const SensorData& s) { return equal(s, last); })) return 0;
    const double gap = between(last, next.front());
    double usual = 0;
    for (std::size_t i = 1; i < next.size(); ++i)
        usual += movement(next[i - 1], next[i]) / static_cast<double>(next.size() - 1);
    const double jump = movement(last, next.front());
    constexpr double kFourSteps = 4;
    const double late = periodNs > 0 ? std::abs(gap - periodNs) / periodNs : 0;
    return capped(late) + (jump > 0 ? capped(jump / (kFourSteps * usual)) : 0);
}

// A batch that begins no later than the one before is discarded.
double Attribution::Track::staleDistance(const HandOver& batch) const {
    const bool repeats = std::ranges::any_of(batch.samples, [this](const SensorData& sample) {
        return std::ranges::any_of(samples, [&](const SensorData& s) { return equal(s, sample); });
    });
    return (repeats ? 0 : kOtherQueue) + (batch.updated->queue != queue ? kOtherQueue : 0);
}

double Attribution::Track::distanceBut(const HandOver& batch) const {
    const double distance = lane != batch.lane ? kOtherThread : 0;
    const bool stale =
        batch.isUnfiled() && !samples.empty() && !batch.samples.empty() && batch.firstNs() <= samples.front().timestamp;
    if (stale) return distance + staleDistance(batch);
    const bool otherQueue =
        batch.updated && queue != 0 && batch.updated->queue != std::min(queue + 1, lsc::kMaxBufferedFrames);
    return distance + (otherQueue ? kOtherQueue : 0) + sampleDistance(batch.samples);
}

std::int64_t Attribution::Track::skipped(const HandOver& batch) const {
    if (!frame || !batch.frame()) return 0;
    // Numbers wrap at 32 bits.
    return static_cast<std::int32_t>(*batch.frame() - (*frame + 1 + static_cast<std::uint32_t>(empty)));
}

bool Attribution::Track::mayPrecede(const HandOver& batch) const {
    return frame && distanceBut(batch) <= kContinues;
}

std::int64_t Attribution::Track::owed(const HandOver& batch) const {
    if (!frame) return batch.frame() == 0U ? 0 : -1;
    const std::int64_t skip = skipped(batch);
    if (!batch.frame() || skip < 0) return -1;
    return std::max<std::int64_t>(skip - usualSkip, 0);
}

double Attribution::Track::distance(const HandOver& batch) const {
    if (batch.emptyType) return lane != batch.lane ? kOtherThread : 0;
    return distanceBut(batch) + (skipped(batch) != 0 ? kOtherFrame : 0);
}

// ---- Sensors

void Attribution::registered(std::int32_t sensor, std::int32_t type) {
    mMonitors.try_emplace(sensor).first->second.type = type;
}

void Attribution::filed(std::int32_t sensor, const HandOver& batch) {
    mMonitors[sensor].track.follow(batch);
    if (!batch.emptyType) ++mUses[{batch.lane, sensor}];
}

Attribution::Sensors Attribution::candidates(const HandOver& batch) const {
    const auto fits = [&](const Monitor& monitor) { return !batch.emptyType || *batch.emptyType == monitor.type; };
    Sensors listed;
    for (const auto& [id, votes] : batch.votes) {
        const auto found = mMonitors.find(id);
        if (votes.listed != 0 && found != mMonitors.end() && fits(found->second)) listed.push_back(id);
    }
    if (!listed.empty()) return listed;
    Sensors possible;
    for (const auto& [id, monitor] : mMonitors) {
        if (possible.size() == kMostCandidates) break;
        const auto found = batch.votes.find(id);
        if (fits(monitor) && (found == batch.votes.end() || found->second.missed == 0)) possible.push_back(id);
    }
    return possible;
}

std::optional<std::int32_t> Attribution::followed(const HandOver& batch, const Sensors& among,
                                                  const Timeline& ahead) const {
    Track track;
    track.follow(batch);
    for (const Call& call : ahead.calls()) {
        const auto* const next = std::get_if<HandOver>(&call.data);
        if (next == nullptr || next->emptyType || track.distance(*next) > kContinues) continue;
        const std::optional<std::int32_t> sensor = next->listedBy();
        if (sensor && std::ranges::find(among, *sensor) != among.end()) return sensor;
        track.follow(*next);
    }
    return std::nullopt;
}

// Whether the first hand-over of a monitor that has none yet is still to come.
bool Attribution::beginsLater(std::int32_t sensor, const Timeline& ahead) const {
    if (mMonitors.at(sensor).track.begun) return false;
    return std::ranges::any_of(ahead.calls(), [&](const Call& call) {
        const auto* const next = std::get_if<HandOver>(&call.data);
        return next != nullptr && framesHeld(*next) == 1 && next->listedBy() == sensor;
    });
}

Attribution::Choice Attribution::choose(const HandOver& batch, const Timeline& ahead) {
    Sensors among = candidates(batch);
    if (among.empty()) return {};
    if (among.size() > 1 && !batch.emptyType && !batch.listedBy()) {
        std::erase_if(among, [&](std::int32_t sensor) { return beginsLater(sensor, ahead); });
        if (among.empty()) among = candidates(batch);
    }
    if (among.size() == 1) return {among.front(), true};
    if (batch.emptyType) return chooseEmpty(among, batch, ahead);
    // Nearest first; a sensor without a hand-over yet may begin with any.
    std::vector<std::pair<double, std::int32_t>> near;
    for (const std::int32_t sensor : among) {
        const Track& track = mMonitors.at(sensor).track;
        near.emplace_back(track.begun ? track.distance(batch) : distanceToFirst(batch), sensor);
    }
    std::ranges::sort(near);
    const auto [distance, nearest] = near.front();
    const bool clear = near.at(1).first - distance > kClear && among.size() < kMostCandidates;
    const bool begins = !mMonitors.at(nearest).track.begun;
    if (clear && !begins) return {nearest, true};
    if (const auto sensor = followed(batch, among, ahead)) return {sensor, true};
    return {nearest, clear};
}

}  // namespace replay::import
