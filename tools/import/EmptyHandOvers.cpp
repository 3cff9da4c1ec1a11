// The part of Attribution for hand-overs without samples. Their thread tells whose they are where only one sensor hands
// over on it; otherwise the number of the next hand-over that has samples.
#include <algorithm>
#include <limits>
#include <tuple>

#include "tools/import/Attribution.h"

namespace replay::import {
namespace {

constexpr std::size_t kKnownThread = 6;  // so many hand-overs on a thread tell who uses it

}  // namespace

// The sensor that lists a hand-over, or the only one whose calculations do not pass it over.
std::optional<std::int32_t> Attribution::ownerOf(const HandOver& batch, const Sensors& among) {
    if (const auto listed = batch.listedBy(); listed || batch.votes.empty()) return listed;
    std::optional<std::int32_t> owner;
    for (const std::int32_t sensor : among) {
        const auto votes = batch.votes.find(sensor);
        if (votes != batch.votes.end() && votes->second.missed != 0) continue;
        if (owner) return std::nullopt;
        owner = sensor;
    }
    return owner;
}

Attribution::Coming Attribution::coming(const Sensors& among, const Timeline& ahead) {
    Coming coming;
    for (const Call& call : ahead.calls()) {
        const auto* const batch = std::get_if<HandOver>(&call.data);
        coming.push_back({&call, batch != nullptr ? ownerOf(*batch, among) : std::nullopt});
    }
    return coming;
}

std::size_t Attribution::uses(std::int32_t sensor, std::size_t lane, const Coming& coming) const {
    const auto known = mUses.find({lane, sensor});
    const auto isUse = [&](const auto& next) {
        return next.owner == sensor && std::get<HandOver>(next.call->data).lane == lane;
    };
    return static_cast<std::size_t>(std::ranges::count_if(coming, isUse)) +  // not negative
           (known != mUses.end() ? known->second : 0);
}

Attribution::Next Attribution::nextOf(std::int32_t sensor, const HandOver& batch, const Coming& coming) const {
    const Track& track = mMonitors.at(sensor).track;
    Next next{.sensor = sensor};
    for (const auto& [call, owner] : coming) {
        ++next.place;
        const auto* const end = std::get_if<UnregisterCall>(&call->data);
        if (end != nullptr && end->sensor == sensor) break;
        const auto* const its = std::get_if<HandOver>(&call->data);
        if (its == nullptr) continue;
        if (its->emptyType) {
            if (its->emptyType == batch.emptyType) ++next.chances;
        } else if (owner ? *owner == sensor : track.mayPrecede(*its)) {
            next.owed = track.owed(*its);
            return next;
        }
    }
    next.place = std::numeric_limits<std::size_t>::max();
    return next;
}

Attribution::Choice Attribution::chooseEmpty(const Sensors& among, const HandOver& batch, const Timeline& ahead) const {
    const Coming all = coming(among, ahead);
    std::size_t known = 0;
    std::vector<Next> possible;
    for (const std::int32_t sensor : among) {
        possible.push_back(nextOf(sensor, batch, all));
        possible.back().uses = uses(sensor, batch.lane, all);
        known += possible.back().uses;
    }
    if (known >= kKnownThread) std::erase_if(possible, [](const Next& next) { return next.uses == 0; });
    if (possible.size() == 1) return {possible.front().sensor, true};
    const std::int32_t any = possible.front().sensor;
    std::erase_if(possible, [](const Next& next) { return next.owed == 0; });
    if (possible.empty()) return {any, false};
    // Whose number is due first, lest it be missing there.
    const auto due = [](const Next& next) { return std::tuple(next.owed < 0, next.uses == 0, next.place); };
    const Next& first = *std::ranges::min_element(possible, {}, due);
    const bool alone = std::ranges::count_if(possible, [](const Next& next) { return next.uses != 0; }) == 1;
    return {first.sensor, possible.size() == 1 || first.isSure() || (first.owed < 0 && alone)};
}

}  // namespace replay::import
