#include "tools/import/SampleBuffer.h"

#include "customer/aaa/aaa/lsc/OisSpan.h"

namespace replay::import {
namespace {

constexpr std::int64_t kNsPerUs = lsc::kNsPerUs;  // signed, as times of samples are

}  // namespace

SampleBuffer::Filing SampleBuffer::file(std::uint32_t frame, lsc::Samples batch) {
    const lsc::SampleQueue::Filing made = mQueue.push(frame, batch);
    if (!batch.empty() && made.fate != lsc::SampleQueue::Fate::kDiscarded) mFrame = frame;
    return {made.fate, made.olderSamples, batch.size(), mQueue.frameCount(),
            batch.empty() ? 0 : batch.back().timestamp};
}

lsc::Samples SampleBuffer::window(std::uint64_t timeNs) const {
    const auto match = mQueue.firstNotBefore(timeNs);
    if (timeNs == 0 || !match || total() < lsc::kWindowSize) return {};
    return mQueue.around(*match);
}

std::optional<std::int64_t> SampleBuffer::newestUs() const {
    const auto ns = mQueue.newestNs();
    return ns ? std::optional(*ns / kNsPerUs) : std::nullopt;
}

std::optional<std::int64_t> SampleBuffer::newestBatchUs() const {
    const lsc::Samples* const batch = mQueue.frameCount() != 0 ? mQueue.byFrame(mFrame) : nullptr;
    return batch != nullptr ? std::optional(lsc::sampleTimeUs(batch->front())) : newestUs();
}

bool SampleBuffer::holds(std::int64_t timeUs) const {
    const auto match = mQueue.firstNotBefore(static_cast<std::uint64_t>(timeUs * kNsPerUs));  // times compare unsigned
    return match && match->timestamp() / kNsPerUs == timeUs;
}

}  // namespace replay::import
