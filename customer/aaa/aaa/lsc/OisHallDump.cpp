#include "customer/aaa/aaa/lsc/OisHallDump.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace lsc {
namespace {

// Casts in this file: printf's conversions name types of their own, and the file shows unsigned numbers as signed ones.

constexpr std::size_t kPathSize = 128;  // bytes, the terminating zero included

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// The camera service opens a name in a directory that others may write to: no link is followed, nothing but a file is
// written, a FIFO in its place does not block, and a program that the service starts does not get it.
File openFile(const char* path) noexcept {
    constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    constexpr mode_t kMode = 0666;  // less what the process's umask takes away, as with fopen
    const int descriptor = open(path, kFlags, kMode);
    if (descriptor < 0) return nullptr;
    if (File file{fdopen(descriptor, "w+")}) {
        // Last, so that what stands there stays as long as anything can fail. It fails for all but files.
        return ftruncate(descriptor, 0) == 0 ? std::move(file) : nullptr;
    }
    close(descriptor);
    return nullptr;
}

File openDump(int sensorId, unsigned int frame, std::uint64_t startUs) noexcept {
    char path[kPathSize] = {};
    std::snprintf(path, sizeof path, "data/vendor/camera_dump/capture_camera_%d_frame_%d_%lld_oishall.txt", sensorId,
                  static_cast<int>(frame), static_cast<long long>(startUs));
    return openFile(path);
}

}  // namespace

bool isDumped(CustShadingType type) {
    return type == CustShadingType::kSingleExposure || type == CustShadingType::kMultiExposureNe ||
           type == CustShadingType::kMultiExposureSe;
}

bool writeOisHallDump(int sensorId, unsigned int frame, const ExposureTimes& times, const ActiveSamples& samples,
                      const SpanSearch& span, const std::vector<double>& x, const std::vector<double>& y) noexcept {
    File file = openDump(sensorId, frame, times.startUs);
    if (!file) return true;
    std::FILE* const out = file.get();

    std::fprintf(out, "frame: %d\n", static_cast<int>(frame));
    for (std::int32_t i = span.start; i <= span.end; ++i) {
        std::fprintf(out, "\t\"OIS hall X\": %f\n", static_cast<double>(samples[i].x));
        std::fprintf(out, "\t\"OIS hall Y\": %f\n", static_cast<double>(samples[i].y));
    }
    if (x.size() >= 2 && y.size() >= 2) {
        std::fprintf(out, "\t\"match ois hall0 X\": %lf\n", x[0]);
        std::fprintf(out, "\t\"match ois hall0 y\": %lf\n", y[0]);
        std::fprintf(out, "\t\"match ois hall1 X\": %lf\n", x[1]);
        std::fprintf(out, "\t\"match ois hall1 y\": %lf\n", y[1]);
    }
    std::fprintf(out, "\t\"exposure_time\": %lld\n", static_cast<long long>(times.exposureUs));
    std::fprintf(out, "\t\"shutter_time\": %d\n", static_cast<int>(times.shutterUs));
    const bool written = std::ferror(out) == 0;
    return std::fclose(file.release()) == 0 && written;
}

}  // namespace lsc
