// Property: the queue of samples gives what the plainest code gives: batches divided, found by time and by frame.
// What it holds is bounded.
#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "fuzz/Input.h"
#include "tests/support/PlainQueue.h"

namespace {

using fuzz::require;
using lsc::Samples;
using NSCam::Utils::SensorData;

constexpr std::uint32_t kFrames = 30;
constexpr unsigned int kMaxBatch = 48;
// A split keeps samples with the newest entry only when they are in the later half of what is left up to the newest
// stamp, and that can be halved as often as a stamp has bits.
constexpr std::size_t kMostHeld = (kFrames + 64) * kMaxBatch;

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
    test::PlainQueue model;
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
            expected = test::plainWindow(model.all(), wanted);
        }
        require(test::same(actual, expected));
        require(queue.frameCount() == model.frames.size());
        require(!positive || queue.sampleCount() <= kMostHeld);
    }
    return 0;
}
