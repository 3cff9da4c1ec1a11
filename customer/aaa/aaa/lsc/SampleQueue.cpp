#include "customer/aaa/aaa/lsc/SampleQueue.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace lsc {

SampleQueue::Filing SampleQueue::push(std::uint32_t frame, Samples& batch) {
    if (batch.empty()) return {Fate::kEmpty};
    // What can fail works on copies.
    Samples sorted(batch);
    sortByTime(sorted);
    const auto relation = mEntries.empty() ? BatchRelation::kFollows : relationOf(mEntries.back().samples, sorted);
    if (relation == BatchRelation::kStale) {
        batch.swap(sorted);
        return {Fate::kDiscarded};
    }
    Filing filing = {Fate::kFiled};
    if (relation == BatchRelation::kOverlaps) {
        filing = split(frame, sorted, batch);
    } else {
        mEntries.push_back({frame, std::move(sorted)});
        const Samples& filed = mEntries.back().samples;
        batch.assign(filed.begin(), filed.end());  // has the room
    }
    if (mEntries.size() > mMaxFrames) mEntries.pop_front();
    filing.dropped = dropExcess();
    assert(isSound());
    return filing;
}

bool SampleQueue::dropExcess() noexcept {
    const std::size_t count = sampleCount();
    if (count <= kMaxBufferedSamples) return false;
    std::size_t excess = count - kMaxBufferedSamples;
    for (; excess >= mEntries.front().samples.size(); mEntries.pop_front())
        excess -= mEntries.front().samples.size();
    Samples& oldest = mEntries.front().samples;
    oldest.erase(oldest.begin(), std::next(oldest.begin(), static_cast<std::ptrdiff_t>(excess)));  // within the list
    if (oldest.capacity() > 2 * oldest.size()) oldest.shrink_to_fit();  // or a huge batch would stay in memory
    return true;
}

bool SampleQueue::isSound() const {
    if (mEntries.size() > mMaxFrames || sampleCount() > kMaxBufferedSamples) return false;
    const Samples* older = nullptr;
    for (const auto& [frame, samples] : mEntries) {
        if (samples.empty() || !std::is_sorted(samples.begin(), samples.end(), isEarlier)) return false;
        if (older != nullptr && relationOf(*older, samples) != BatchRelation::kFollows) return false;
        older = &samples;
    }
    return true;
}

SampleQueue::Filing SampleQueue::split(std::uint32_t frame, const Samples& sorted, Samples& batch) {
    SplitBatches parts = splitBatches(mEntries.back().samples, sorted);
    if (!parts.newer.empty()) mEntries.push_back({frame, parts.newer});
    const auto older = mEntries.end() - (parts.newer.empty() ? 1 : 2);
    older->samples.swap(parts.older);
    batch.swap(parts.newer);
    const Filing filing = {Fate::kSplit, older->samples.size(), parts.splitTime};
    if (older->samples.empty()) mEntries.erase(older);
    return filing;
}

const Samples* SampleQueue::byFrame(std::uint32_t frame) const {
    const auto newest = std::find_if(mEntries.rbegin(), mEntries.rend(),
                                     [frame](const FrameEntry& entry) { return entry.frame == frame; });
    return newest != mEntries.rend() ? &newest->samples : nullptr;
}

std::optional<std::int64_t> SampleQueue::newestNs() const {
    if (mEntries.empty()) return std::nullopt;
    return mEntries.back().samples.back().timestamp;
}

void SampleQueue::clear() {
    mEntries.clear();
    mEntries.shrink_to_fit();
}

}  // namespace lsc
