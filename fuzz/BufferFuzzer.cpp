// Property: the queue of samples gives what the plainest code gives: batches divided, found by time and by frame.
#include "customer/aaa/aaa/lsc/SampleQueue.h"
#include "fuzz/Input.h"
#include "tests/support/PlainQueue.h"

namespace {

using fuzz::require;
using lsc::Samples;
using NSCam::Utils::SensorData;

constexpr std::uint32_t kFrames = 30;

Samples batch(fuzz::Input& input, std::int64_t& time, float& label) {
    Samples samples(input.below(48));
    for (SensorData& sample : samples) {
        sample = {};
        sample.timestamp = time = input.time(time);
        sample.oisX = label++;
    }
    return samples;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    lsc::SampleQueue queue(kFrames);
    test::PlainQueue model;
    std::int64_t time = 0;
    float label = 0;
    while (!input.empty()) {
        const unsigned int action = input.below(8);
        const std::uint32_t frame = input.below(8);
        Samples actual;
        Samples expected;
        if (action < 5) {
            actual = expected = batch(input, time, label);
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
    }
    return 0;
}
