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

// The sample `count` before a match, or the first one.
SampleMatch stepBack(const FrameQueue& queue, SampleMatch match, std::size_t count) {
    while (match.index < count && match.entry != queue.begin())
        match.index += (--match.entry)->samples.size();
    match.index -= std::min(match.index, count);
    return match;
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
    auto entry =
        isOrdered(queue.front().samples) ? std::partition_point(queue.begin(), queue.end(), endsBefore) : queue.begin();
    for (; entry != queue.end(); ++entry) {
        const Samples& samples = entry->samples;
        const auto found = isOrdered(samples) ? std::partition_point(samples.begin(), samples.end(), isBefore)
                                              : std::find_if_not(samples.begin(), samples.end(), isBefore);
        if (found != samples.end()) return SampleMatch{entry, static_cast<std::size_t>(found - samples.begin())};
    }
    return std::nullopt;
}

std::size_t offsetOf(const FrameQueue& queue, const SampleMatch& match) {
    return totalSamples(queue.begin(), match.entry) + match.index;
}

Samples copyWindow(const FrameQueue& queue, const SampleMatch& match) {
    constexpr std::size_t kWindowAfter = kWindowSize - kWindowBefore;  // the match is the first of them
    std::size_t after = match.entry->samples.size() - match.index;
    for (auto next = match.entry + 1; after < kWindowAfter && next != queue.end(); ++next)
        after += next->samples.size();

    auto [entry, begin] = stepBack(queue, match, kWindowSize - std::min(after, kWindowAfter));
    Samples window;
    window.reserve(kWindowSize);
    for (; window.size() < kWindowSize; ++entry, begin = 0) {
        const auto first = entry->samples.data() + begin;
        window.insert(window.end(), first,
                      first + std::min(entry->samples.size() - begin, kWindowSize - window.size()));
    }
    return window;
}

}  // namespace lsc
