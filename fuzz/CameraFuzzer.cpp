// Property: whatever a provider has handed over, a camera gets its positions back. Thirty good hand-overs after it,
// each frame gets the position that a camera without such a past gets; a time stamp of the future takes a restart of
// the monitor, too.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "fuzz/Input.h"
#include "platform/host/Host.h"

namespace {

using Samples = std::vector<NSCam::Utils::SensorData>;

constexpr std::int64_t kMs = 1'000'000;
constexpr std::int64_t kNow = 100'000 * kMs;  // the good samples' first stamp
constexpr int kBatchMs = 17;
constexpr int kGoodBatches = 34;
constexpr unsigned int kMode = 1;

// How often the fuzzed past itself gave a position, and after it; printed at the end.
std::size_t gPast = 0;
std::size_t gBack = 0;
const int gPrinted = std::atexit(
    [] { std::fprintf(stderr, "calculations: %zu completed in what was fuzzed, %zu after it\n", gPast, gBack); });

struct Position {
    std::vector<double> x;
    std::vector<double> y;
    bool operator==(const Position&) const = default;
};

class Camera {
public:
    Camera(TarvoShadingCustomUtil& util, int sensor) : mUtil(util), mSensor(sensor) {
        host::Sensor module;
        module.otpLayout = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
        module.otp = {1};
        module.rollingShutter = {{kMode, 10 * kMs}};
        host::setSensor(sensor, module);
        start();
    }

    void start() {
        mUtil.RegisterAndStartSensorMonitor(mSensor, type());
        mUtil.StoreRollingShutter(mSensor, kMode);
    }
    void restart() {
        mUtil.UnRegisterSensorMonitor(mSensor);
        start();
    }
    void storeShutter(unsigned int mode) { mUtil.StoreRollingShutter(mSensor, mode); }
    void handOver(unsigned int frame, const Samples& samples) {
        host::deliverSamples(static_cast<NSCam::Utils::eSensorType>(type()), samples);
        mUtil.UpdateSensorData(mSensor, frame, 0);
    }
    Position ask(std::int64_t sof, std::uint64_t exposureNs) {
        Position position;
        mUtil.CalcOISValue(CustShadingType::kFrame, {static_cast<std::uint64_t>(sof), 0, 0, exposureNs, 0, 0},
                           &position.x, &position.y, 0, mSensor);
        return position;
    }

private:
    unsigned int type() const { return static_cast<unsigned int>(mSensor) + 5; }

    TarvoShadingCustomUtil& mUtil;
    const int mSensor;
};

Samples goodBatch(int number) {
    Samples samples(kBatchMs);
    for (int i = 0; i < kBatchMs; ++i) {
        const int ms = number * kBatchMs + i;
        NSCam::Utils::SensorData& sample = samples[static_cast<std::size_t>(i)];
        sample = {};
        sample.timestamp = kNow + ms * kMs;
        sample.oisX = static_cast<float>(ms);
        sample.oisY = static_cast<float>(-2 * ms);
    }
    return samples;
}

// Mostly a provider's: one sample a millisecond, each batch after the one before.
Samples anyBatch(fuzz::Input& input, std::int64_t& time) {
    const bool usual = input.below(4) != 0;
    Samples samples(input.below(48));
    for (NSCam::Utils::SensorData& sample : samples) {
        time = usual && time < kNow - kMs ? time + kMs : input.time(time);
        sample = {};
        sample.timestamp = time;
        sample.oisX = usual ? 1.0F : input.take<float>();
    }
    return samples;
}

// Wraps, as the metadata's own bits may.
std::int64_t earlier(std::int64_t time, std::int64_t by) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time) - static_cast<std::uint64_t>(by));
}

// Returns whether a stamp was of the future.
bool live(fuzz::Input& input, Camera& camera) {
    bool future = false;
    std::int64_t time = kNow - 5'000 * kMs;
    for (unsigned int frame = 1; !input.empty(); ++frame) {
        const Samples samples = anyBatch(input, time);
        future = future || std::ranges::any_of(samples, [](const auto& its) { return its.timestamp >= kNow; });
        camera.handOver(input.below(8) == 0 ? input.below(4) : frame, samples);
        const unsigned int action = input.below(32);
        if (action == 0) camera.restart(), future = false;
        if (action == 1) camera.storeShutter(input.below(3));
        if (action > 1) gPast += camera.ask(earlier(time, input.below(64) * kMs), input.below(32) * kMs).x.size() / 2;
    }
    return future;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    host::reset();
    TarvoShadingCustomUtil util;
    Camera camera(util, 0);
    Camera other(util, 1);
    if (live(input, camera)) camera.restart();
    camera.storeShutter(kMode);
    for (int number = 0; number < kGoodBatches; ++number) {
        for (Camera* its : {&camera, &other})
            its->handOver(1000, goodBatch(number));
        if (number < kGoodBatches - 3) continue;
        const std::int64_t sof = kNow + (number * kBatchMs - 20) * kMs;
        const Position position = camera.ask(sof, 5 * kMs);
        fuzz::require(position.x.size() == 2 && position == other.ask(sof, 5 * kMs));
        ++gBack;
    }
    return 0;
}
