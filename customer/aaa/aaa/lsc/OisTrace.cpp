#include "customer/aaa/aaa/lsc/OisTrace.h"

#include "customer/aaa/aaa/lsc/UnitLog.h"

namespace lsc {
namespace {

using log::dec;
using log::lld;
using log::llu;
using log::wide;

constexpr char kFunction[] = "CalcOISValue";

}  // namespace

void logParameters(std::int32_t sensorId, std::uint32_t type, std::size_t sampleCount, const ExposureTimes& times,
                   std::int64_t timeOffsetUs) {
    LSC_LOG_DEBUG_AS(
        kFunction,
        "sensorId = %d, type = %u, oisCount = %u, sof_timestamp = %llu, exposure_time = %llu, shutter_time = %u, "
        "timeDiff = %lld",
        sensorId, type, static_cast<unsigned int>(sampleCount), llu(times.startUs), llu(times.exposureUs),
        times.shutterUs, lld(timeOffsetUs));
}

void logOutputs(std::int32_t sensorId, std::uint32_t frame, std::int32_t mode, const std::vector<double>& x,
                const std::vector<double>& y) {
    if (x.empty() || y.empty()) return;
    LSC_LOG_DEBUG_AS(
        kFunction,
        "sensorId = %d, frameId = %d, mOisCalCMode = %d, out_frame_ois_size(%zu, %zu), out_frame_ois0(x = %lf, "
        "y=%lf), out_frame_ois1(x = %lf, y=%lf)",
        sensorId, dec(frame), mode, x.size(), y.size(), x.front(), y.front(), x.back(), y.back());
}

void traceSamples(const Samples& samples) {
    int index = 0;
    for (const NSCam::Utils::SensorData& sample : samples) {
        LSC_LOG_DEBUG_AS(kFunction, "get source ois data index = %d, timestamp = %lld, oisHall_x = %f, oisHall_y = %f",
                         index, lld(sampleTimeUs(sample)), wide(sample.oisX), wide(sample.oisY));
        ++index;
    }
}

void traceSearch(const ActiveSamples& samples, const ExposureTimes& times, const SpanSearch& span) {
    const auto fromStart = [&](std::int32_t i) { return lld(distanceUs(times.startUs, samples[i].timeUs)); };
    for (std::int32_t i = 0; i < span.startScanned; ++i) {
        if (samples[i].timeUs == 0) continue;
        LSC_LOG_DEBUG_AS(kFunction, "startIndex, index = %d, timestamp Difference = %lld", i, fromStart(i));
    }
    if (!span.startFound) return;
    const std::int32_t match = span.startScanned - 1;
    LSC_LOG_DEBUG_AS(kFunction, "stamp_up = %lld, i = %d, stamp_down = %lld, i+1 = %d", fromStart(match), match,
                     fromStart(match + 1), match + 1);
    const std::uint64_t readoutEnd = readoutEndUs(samples, span.start, times);
    for (std::int32_t j = span.start; j < span.endScanned; ++j) {
        LSC_LOG_DEBUG_AS(kFunction, "endIndex, i = %d, timestamp Difference = %lld", j,
                         lld(distanceUs(readoutEnd, samples[j].timeUs)));
    }
}

void traceReduction(const ActiveSamples& samples, const ExposureTimes& times, const SpanSearch& span) {
    // Casts: %ld takes long, whatever the fixed-width types are made of.
    for (std::int32_t i = span.start; i <= span.end; ++i) {
        LSC_LOG_DEBUG_AS(kFunction,
                         "Match OIS data, sof_timestamp = %ld, activeNum = %d, hall = (%f, %f), timestamp = %ld",
                         static_cast<long>(times.startUs), span.size(), wide(samples[i].x), wide(samples[i].y),
                         static_cast<long>(samples[i].timeUs));
    }
}

}  // namespace lsc
