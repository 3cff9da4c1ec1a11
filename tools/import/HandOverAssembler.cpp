#include "tools/import/HandOverAssembler.h"

#include <utility>

#include "customer/aaa/aaa/lsc/SampleQueue.h"

namespace replay::import {
namespace {

// A larger index is damage: no buffer holds so many samples.
constexpr std::size_t kMaxBatch = lsc::kMaxBufferedSamples;

NSCam::Utils::SensorData sampleOf(const SampleReceived& received) {
    NSCam::Utils::SensorData sample = {};
    sample.timestamp = static_cast<std::int64_t>(received.timestamp);  // printed as an unsigned number
    sample.oisX = static_cast<float>(received.oisX.value);
    sample.oisY = static_cast<float>(received.oisY.value);
    sample.oisHallX = static_cast<float>(received.hallX.value);
    sample.oisHallY = static_cast<float>(received.hallY.value);
    return sample;
}

}  // namespace

HandOver& HandOverAssembler::open(std::size_t line) {
    if (!mOpen) {
        mOpen.emplace();
        mOpen->lane = mLane;
        mNextIndex = 0;
    }
    mLine = line;
    return *mOpen;
}

void HandOverAssembler::take(const SampleReceived& sample, std::size_t line) {
    // A frame number ends the samples, and indexes only rise within a batch.
    if (mOpen && (sample.index < mNextIndex || mOpen->frame())) letGo();
    HandOver& batch = open(line);
    const std::size_t skipped = sample.index - mNextIndex;
    if (skipped > kMaxBatch) return mTimeline.doubt(line, "a sample with an index out of order; left out");
    batch.skipped += skipped;
    mNextIndex = sample.index + 1;
    batch.samples.push_back(sampleOf(sample));
}

void HandOverAssembler::closeUnlessFrame(std::uint32_t frame) {
    if (mOpen && mOpen->frame() && *mOpen->frame() != frame) letGo();
}

void HandOverAssembler::take(const BatchDivided& divided, std::size_t line) {
    if (mOpen && mOpen->frame()) letGo();
    open(line).divided = divided;
}

void HandOverAssembler::take(const BatchFiled& filed, std::size_t line) {
    closeUnlessFrame(filed.frame);
    if (mOpen && mOpen->filed) letGo();
    open(line).filed = filed;
}

void HandOverAssembler::take(const BatchUpdated& updated, std::size_t line) {
    closeUnlessFrame(updated.frame);
    open(line).updated = updated;
    letGo();
}

void HandOverAssembler::take(const BatchEmpty& empty, std::size_t line) {
    letGo();
    open(line).emptyType = empty.type;
    letGo();
}

void HandOverAssembler::letGo() {
    if (!mOpen) return;
    mTimeline.add(mLine, std::move(*mOpen));
    mOpen.reset();
}

}  // namespace replay::import
