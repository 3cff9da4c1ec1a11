#include "tools/import/Votes.h"

#include <algorithm>
#include <bit>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay::import {
namespace {

// NaNs of one text are one value here.
bool same(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

void vote(const Exposure& exposure, HandOver& batch) {
    const std::vector<Listed>& listing = exposure.listing;
    HandOver::Votes votes;
    for (const NSCam::Utils::SensorData& sample : batch.samples) {
        const std::int64_t time = lsc::sampleTimeUs(sample);
        if (time < listing.front().timeUs || time > listing.back().timeUs) continue;
        if (isListed(listing, sample)) {
            ++votes.listed;
        } else if (exposure.isListed()) {
            ++votes.missed;
        }
    }
    if (votes.listed == 0 && votes.missed == 0) return;
    HandOver::Votes& all = batch.votes[exposure.calculation->sensor];
    all.listed += votes.listed;
    all.missed += votes.missed;
}

}  // namespace

bool isListed(const std::vector<Listed>& listing, const NSCam::Utils::SensorData& sample) {
    const std::int64_t time = lsc::sampleTimeUs(sample);
    auto found = std::ranges::lower_bound(listing, time, {}, &Listed::timeUs);
    for (; found != listing.end() && found->timeUs == time; ++found) {
        if (same(found->x, sample.oisX) && same(found->y, sample.oisY)) return true;
    }
    return false;
}

void vote(const Exposure& exposure, Timeline& timeline) {
    if (exposure.listing.empty() || !exposure.trusted) return;
    const std::size_t line = exposure.query ? exposure.query->line : exposure.line;
    for (Call& call : timeline.calls()) {
        auto* const batch = std::get_if<HandOver>(&call.data);
        // What the buffer discarded is never listed.
        if (batch == nullptr || call.line > line || batch->samples.empty()) continue;
        if (!batch->filed && !batch->divided) continue;
        if (batch->firstNs() / std::int64_t{lsc::kNsPerUs} > exposure.listing.back().timeUs ||
            batch->lastNs() / std::int64_t{lsc::kNsPerUs} < exposure.listing.front().timeUs) {
            continue;
        }
        vote(exposure, *batch);
    }
}

}  // namespace replay::import
