// The queue of samples as the plainest code has it: sort everything, scan everything, copy everything.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "customer/aaa/aaa/lsc/SampleBatch.h"

namespace test {

__extension__ using Wide = __int128;

inline std::uint64_t unsignedTime(const NSCam::Utils::SensorData& sample) {
    return static_cast<std::uint64_t>(sample.timestamp);
}
inline bool earlier(const NSCam::Utils::SensorData& a, const NSCam::Utils::SensorData& b) {
    return a.timestamp < b.timestamp;
}
inline bool same(const lsc::Samples& a, const lsc::Samples& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& left, const auto& right) {
        return left.timestamp == right.timestamp && left.oisX == right.oisX;
    });
}

struct PlainQueue {
    std::deque<std::pair<std::uint32_t, lsc::Samples>> frames;

    void push(std::uint32_t frame, lsc::Samples& data) {
        constexpr std::size_t kFrames = 30;
        if (data.empty()) return;
        std::stable_sort(data.begin(), data.end(), earlier);
        if (!frames.empty() && frames.back().second.back().timestamp > data.front().timestamp) {
            lsc::Samples& older = frames.back().second;
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
            if (older.empty()) frames.pop_back();
            if (data.empty()) return;
        }
        frames.emplace_back(frame, data);
        if (frames.size() > kFrames) frames.pop_front();
    }

    void byFrame(std::uint32_t frame, lsc::Samples& out) const {
        for (const auto& [number, samples] : frames) {
            if (number == frame) out = samples;
        }
    }

    lsc::Samples all() const {
        lsc::Samples list;
        for (const auto& [number, samples] : frames)
            list.insert(list.end(), samples.begin(), samples.end());
        return list;
    }
};

// Position of the first sample not before `time`; their number when there is none.
inline std::size_t plainMatch(const lsc::Samples& all, std::uint64_t time) {
    std::size_t i = 0;
    while (i < all.size() && unsignedTime(all[i]) < time)
        ++i;
    return i;
}

// The hundred samples around `time`; none without a match or with fewer.
inline lsc::Samples plainWindow(const lsc::Samples& all, std::uint64_t time) {
    const std::size_t i = plainMatch(all, time);
    if (i == all.size() || all.size() < 100) return {};
    std::size_t begin = 0;
    if (i >= 50) begin = i + 50 >= all.size() ? all.size() - 100 : i - 50;
    return {all.data() + begin, all.data() + begin + 100};
}

}  // namespace test
