#include "tools/import/Calls.h"

#include <algorithm>

namespace replay::import {

std::optional<std::int32_t> HandOver::listedBy() const {
    std::optional<std::int32_t> sensor;
    for (const auto& [id, its] : votes) {
        if (its.listed == 0) continue;
        if (sensor) return std::nullopt;
        sensor = id;
    }
    return sensor;
}

std::optional<std::uint32_t> HandOver::frame() const {
    if (updated) return updated->frame;
    if (filed) return filed->frame;
    if (divided) return static_cast<std::uint32_t>(divided->frame);  // printed as a signed number
    return std::nullopt;
}

std::int64_t HandOver::firstNs() const {
    return std::ranges::min_element(samples, {}, &NSCam::Utils::SensorData::timestamp)->timestamp;
}

std::int64_t HandOver::lastNs() const {
    return std::ranges::max_element(samples, {}, &NSCam::Utils::SensorData::timestamp)->timestamp;
}

std::optional<std::int32_t> Frame::sensor() const {
    for (const Exposure& exposure : exposures) {
        if (exposure.calculation) return exposure.calculation->sensor;
    }
    return std::nullopt;
}

}  // namespace replay::import
