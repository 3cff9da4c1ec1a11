// A stranger to the project: includes none of its headers, loads the library by name, finds every exported symbol by
// its mangled name, and drives one frame through them. Built with libc++, whose names the symbol list holds.
//
//   dlopen_consumer LIBRARY SYMBOLS
#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

// A sample as the platform lays it out; only the fields of the OIS are used.
struct Sample {
    float motion[6];
    float hall[2];
    float x;
    float y;
    float target[2];
    std::uint32_t status;
    std::int64_t timestamp;
};
// Start of frame, its ne and se variants, exposure time, its ne and se variants: ns.
struct Timing {
    std::uint64_t times[6];
};
using Doubles = std::vector<double>;

void* gLibrary = nullptr;

[[noreturn]] void fail(const std::string& what) {
    std::printf("FAILED: %s\n", what.c_str());
    std::exit(1);
}

template <typename Function>
Function* find(const char* name) {
    void* const symbol = dlsym(gLibrary, name);
    if (symbol == nullptr) fail(std::string("no symbol ") + name);
    return reinterpret_cast<Function*>(symbol);
}

int findAll(const char* listFile) {
    std::ifstream list(listFile);
    int count = 0;
    for (std::string name; list >> name; ++count)
        find<void>(name.c_str());
    if (count == 0) fail(std::string("no symbols in ") + listFile);
    return count;
}

// 200 samples, one a millisecond from 1 s on, the k-th at x = k.
std::vector<Sample> samples() {
    std::vector<Sample> made(200);
    for (std::size_t k = 0; k < made.size(); ++k) {
        made[k] = {};
        made[k].x = static_cast<float>(k);
        made[k].timestamp = 1'000'000'000 + static_cast<std::int64_t>(k) * 1'000'000;
    }
    return made;
}

void driveOneFrame() {
    const int sensor = 3;
    const unsigned int type = 5;
    const unsigned int frame = 1;
    if (!find<bool(int, unsigned int)>("_ZN17CustomShadingUtil29RegisterAndStartSensorMonitorEij")(sensor, type)) {
        fail("monitor not started");
    }
    // The host platform stands in for the hall sensor.
    find<void(unsigned int, const std::vector<Sample>&)>(
        "_ZN4host14deliverSamplesEN5NSCam5Utils11eSensorTypeERKNSt3__16vectorINS1_10SensorDataENS3_9allocatorIS5_"
        "EEEE")(type, samples());
    find<void(int, unsigned int, unsigned long)>("_ZN17CustomShadingUtil16UpdateSensorDataEijm")(sensor, frame, 1);

    // Without a rolling shutter, and begun at the first sample, the span is the whole window of 100 samples.
    Doubles x;
    Doubles y;
    const Timing timing = {{1'000'200'000, 0, 0, 0, 0, 0}};
    find<void(unsigned int, const Timing&, Doubles*, Doubles*, const unsigned int&, const int&)>(
        "_ZN17CustomShadingUtil12CalcOISValueE15CustShadingTypeRK17CalcOISValueInputPNSt3__16vectorIdNS4_"
        "9allocatorIdEEEES9_RKjRKi")(0, timing, &x, &y, frame, sensor);
    if (x.size() != 2 || x[0] != 49.5 || x[1] != 0.0) fail("the position is not the mean of the first 100 samples");
    std::printf("position: x = %g\n", x[0]);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) fail("usage: dlopen_consumer LIBRARY SYMBOLS");
    gLibrary = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (gLibrary == nullptr) fail(dlerror());
    std::printf("found %d symbols\n", findAll(argv[2]));
    driveOneFrame();
    return 0;
}
