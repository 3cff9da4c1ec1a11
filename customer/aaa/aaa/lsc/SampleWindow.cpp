#include "customer/aaa/aaa/lsc/SampleWindow.h"

#include <algorithm>

namespace lsc {
namespace {

using NSCam::Utils::SensorData;

std::uint64_t unsignedTime(const SensorData& sample) {
    return static_cast<std::uint64_t>(sample.timestamp);
}

// Position in one entry of the first sample not before `time`; the entry's size when there is none.
std::size_t firstNotBefore(const Samples& samples, std::uint64_t time) {
    const auto isBefore = [time](const SensorData& sample) { return unsignedTime(sample) < time; };
    // Signed order is unsigned order unless negative stamps stand in front.
    const bool ordered = samples.front().timestamp >= 0;
    if (ordered && isBefore(samples.back())) return samples.size();
    const auto found = ordered ? std::partition_point(samples.begin(), samples.end(), isBefore)
                               : std::find_if_not(samples.begin(), samples.end(), isBefore);
    return static_cast<std::size_t>(found - samples.begin());
}

}  // namespace

std::size_t totalSamples(const FrameQueue& queue) {
    std::size_t total = 0;
    for (const FrameEntry& entry : queue)
        total += entry.samples.size();
    return total;
}

std::optional<SampleMatch> firstNotBefore(const FrameQueue& queue, std::uint64_t time) {
    std::size_t offset = 0;
    for (const auto& [frame, samples] : queue) {
        const std::size_t index = firstNotBefore(samples, time);
        if (index < samples.size()) return SampleMatch{offset + index, samples[index].timestamp};
        offset += samples.size();
    }
    return std::nullopt;
}

Samples copyWindow(const FrameQueue& queue, std::size_t total, std::size_t offset) {
    const std::size_t lastBegin = total - kWindowSize;
    std::size_t skip = offset < kWindowBefore ? 0 : std::min(offset - kWindowBefore, lastBegin);
    Samples window;
    window.reserve(kWindowSize);
    for (const auto& [frame, samples] : queue) {
        if (window.size() == kWindowSize) break;
        const std::size_t begin = std::min(skip, samples.size());
        const std::size_t count = std::min(samples.size() - begin, kWindowSize - window.size());
        window.insert(window.end(), samples.data() + begin, samples.data() + begin + count);
        skip -= begin;
    }
    return window;
}

}  // namespace lsc
