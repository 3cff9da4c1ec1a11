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
    if (mOpen) {
        mTimeline.moveToEnd(*mOpen, line);
    } else {
        HandOver batch;
        batch.lane = mLane;
        mOpen = mTimeline.add(line, std::move(batch), true);
        mNextIndex = 0;
    }
    return *batch();
}

void HandOverAssembler::take(const SampleReceived& sample, std::size_t line) {
    // A frame number ends the samples, and indexes only rise within a batch.
    if (mOpen && (sample.index < mNextIndex || batch()->frame())) letGo();
    HandOver& its = open(line);
    const std::size_t skipped = sample.index - mNextIndex;
    if (skipped > kMaxBatch) return mTimeline.doubt(line, "a sample with an index out of order; left out");
    its.skipped += skipped;
    mNextIndex = sample.index + 1;
    its.samples.push_back(sampleOf(sample));
}

void HandOverAssembler::closeUnlessFrame(std::uint32_t frame) {
    if (mOpen && batch()->frame().value_or(frame) != frame) letGo();
}

void HandOverAssembler::take(const BatchDivided& divided, std::size_t line) {
    if (mOpen && batch()->frame()) letGo();
    open(line).divided = divided;
}

void HandOverAssembler::take(const BatchFiled& filed, std::size_t line) {
    closeUnlessFrame(filed.frame);
    if (mOpen && batch()->filed) letGo();
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
    Timeline::close(*mOpen);
    mOpen.reset();
}

}  // namespace replay::import
