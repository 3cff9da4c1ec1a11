#include "tools/import/Repair.h"

#include <algorithm>

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay::import {

void addMissing(lsc::Samples& known, const std::vector<Listed>& listing, std::int64_t fromUs, std::int64_t toUs,
                const SampleBuffer& buffer) {
    auto listed = std::ranges::lower_bound(listing, fromUs, {}, &Listed::timeUs);
    const std::size_t before = known.size();
    for (; listed != listing.end() && listed->timeUs <= toUs; ++listed) {
        const auto same = [&](const NSCam::Utils::SensorData& s) { return lsc::sampleTimeUs(s) == listed->timeUs; };
        const auto last = known.begin() + static_cast<std::ptrdiff_t>(before);  // within
        if (std::ranges::any_of(known.begin(), last, same) || buffer.holds(listed->timeUs)) continue;
        NSCam::Utils::SensorData sample = {};
        sample.timestamp = listed->timeUs * std::int64_t{lsc::kNsPerUs};
        sample.oisX = listed->x;
        sample.oisY = listed->y;
        sample.status = kRepaired;
        known.push_back(sample);
    }
}

std::size_t repair(lsc::Samples& known, const Timeline& ahead, std::int32_t sensor, std::int64_t fromUs,
                   std::int64_t toUs, const SampleBuffer& buffer) {
    const std::size_t before = known.size();
    for (const Call& call : ahead.calls()) {
        const auto* const frame = std::get_if<Frame>(&call.data);
        if (frame == nullptr || frame->sensor() != sensor) continue;
        for (const Exposure& exposure : frame->exposures) {
            if (exposure.trusted) addMissing(known, exposure.listing, fromUs, toUs, buffer);
        }
    }
    if (known.size() != before) lsc::sortByTime(known);
    return known.size() - before;
}

}  // namespace replay::import
