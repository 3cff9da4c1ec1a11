// Property: the queue of samples gives what the plainest code gives: batches divided, found by time and by frame. What
// it holds is bounded.
#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "fuzz/Input.h"

namespace {

using fuzz::require;
using lsc::Samples;
using NSCam::Utils::SensorData;

__extension__ using Wide = __int128;

constexpr std::uint32_t kFrames = 30;
constexpr unsigned int kMaxBatch = 48;
// A split keeps samples with the newest entry only when they are in the later half of what is left up to the newest
// stamp, and that can be halved as often as a stamp has bits.
constexpr std::size_t kMostHeld = (kFrames + 64) * kMaxBatch;

std::uint64_t unsignedTime(const SensorData& sample) {
    return static_cast<std::uint64_t>(sample.timestamp);
}
bool earlier(const SensorData& a, const SensorData& b) {
    return a.timestamp < b.timestamp;
}
bool same(const Samples& a, const Samples& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const SensorData& left, const SensorData& right) {
        return left.timestamp == right.timestamp && left.oisX == right.oisX;
    });
}

// Sort everything, scan everything, copy everything.
struct Model {
    std::deque<std::pair<std::uint32_t, Samples>> queue;

    void push(std::uint32_t frame, Samples& data) {
        if (data.empty()) return;
        std::stable_sort(data.begin(), data.end(), earlier);
        if (!queue.empty() && queue.back().second.back().timestamp > data.front().timestamp) {
            Samples& older = queue.back().second;
            if (older.front().timestamp >= data.front().timestamp) return;
            const Wide sum = Wide{older.back().timestamp} + data.front().timestamp;
            const auto split = static_cast<std::uint64_t>(sum / 2);
            older.insert(older.end(), data.begin(), data.end());
            std::stable_sort(older.begin(), older.end(), earlier);
            auto cut = older.begin();
            while (cut != older.end() && unsignedTime(*cut) < split)
                ++cut;
            data.assign(cut, older.end());
            older.erase(cut, older.end());
            if (older.empty()) queue.pop_back();
            if (data.empty()) return;
        }
        queue.emplace_back(frame, data);
        if (queue.size() > kFrames) queue.pop_front();
    }

    void byFrame(std::uint32_t frame, Samples& out) const {
        for (const auto& [number, samples] : queue) {
            if (number == frame) out = samples;
        }
    }

    void byTime(std::uint64_t time, Samples& out) const {
        Samples all;
        for (const auto& [number, samples] : queue)
            all.insert(all.end(), samples.begin(), samples.end());
        std::size_t i = 0;
        while (i < all.size() && unsignedTime(all[i]) < time)
            ++i;
        if (i == all.size() || all.size() < 100) return;
        std::size_t begin = 0;
        if (i >= 50) begin = i + 50 >= all.size() ? all.size() - 100 : i - 50;
        out.assign(all.data() + begin, all.data() + begin + 100);
    }
};

Samples batch(fuzz::Input& input, std::int64_t& time, float& label, bool positive) {
    Samples samples(input.below(kMaxBatch));
    for (SensorData& sample : samples) {
        sample = {};
        time = input.time(time);
        if (positive && time < 0) time = ~time;
        sample.timestamp = time;
        sample.oisX = label++;
    }
    return samples;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    lsc::SampleQueue queue(kFrames);
    Model model;
    const bool positive = size % 2 == 0;
    std::int64_t time = 0;
    float label = 0;
    while (!input.empty()) {
        const unsigned int action = input.below(8);
        const std::uint32_t frame = input.below(8);
        Samples actual;
        Samples expected;
        if (action < 5) {
            actual = expected = batch(input, time, label, positive);
            queue.push(frame, actual);
            model.push(frame, expected);
        } else if (action == 5) {
            if (const Samples* const held = queue.byFrame(frame)) actual = *held;
            model.byFrame(frame, expected);
        } else {
            const auto wanted = static_cast<std::uint64_t>(input.time(time));
            const auto match = queue.firstNotBefore(wanted);
            if (match && queue.sampleCount() >= lsc::kWindowSize) actual = queue.around(*match);
            model.byTime(wanted, expected);
        }
        require(same(actual, expected));
        require(queue.frameCount() == model.queue.size());
        require(!positive || queue.sampleCount() <= kMostHeld);
    }
    return 0;
}
