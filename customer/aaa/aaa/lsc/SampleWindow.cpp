#include "customer/aaa/aaa/lsc/SampleWindow.h"

#include <algorithm>

namespace lsc {
namespace {

using NSCam::Utils::SensorData;

std::size_t totalSamples(FrameQueue::const_iterator begin, FrameQueue::const_iterator end) {
    std::size_t total = 0;
    for (; begin != end; ++begin)
        total += begin->samples.size();
    return total;
}

}  // namespace

std::size_t totalSamples(const FrameQueue& queue) {
    return totalSamples(queue.begin(), queue.end());
}

std::optional<SampleMatch> firstNotBefore(const FrameQueue& queue, std::uint64_t time) {
    if (queue.empty()) return std::nullopt;
    const auto isBefore = [time](const SensorData& sample) {
        return static_cast<std::uint64_t>(sample.timestamp) < time;
    };
    const auto endsBefore = [&](const FrameEntry& entry) { return isBefore(entry.samples.back()); };
    // Signed order is unsigned order unless negative stamps stand in front.
    const auto isOrdered = [](const Samples& samples) { return samples.front().timestamp >= 0; };
    const auto first =
        isOrdered(queue.front().samples) ? std::partition_point(queue.begin(), queue.end(), endsBefore) : queue.begin();
    for (auto entry = first; entry != queue.end(); ++entry) {
        const Samples& samples = entry->samples;
        const auto found = isOrdered(samples) ? std::partition_point(samples.begin(), samples.end(), isBefore)
                                              : std::find_if_not(samples.begin(), samples.end(), isBefore);
        if (found == samples.end()) continue;
        const auto index = static_cast<std::size_t>(found - samples.begin());
        return SampleMatch{totalSamples(queue.begin(), entry) + index, found->timestamp};
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
