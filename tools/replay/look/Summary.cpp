#include "tools/replay/look/Summary.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace replay {
namespace {

using Kind = Reason::Kind;

constexpr double kUsPerSecond = 1e6;
constexpr std::uint64_t kMatchWindowUs = 1000;  // a sample this far from the exposure start no longer matches
// Two samples this far apart leave exposure starts between them that neither matches.
constexpr std::uint64_t kLongestPeriodUs = 2 * kMatchWindowUs;

[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...) {
    char text[256];
    std::va_list values;
    va_start(values, pattern);
    std::vsnprintf(text, sizeof text, pattern, values);
    va_end(values);
    return text;
}

unsigned long long llu(std::uint64_t value) {
    return value;
}

// "1 exposure", "3 exposures".
std::string counted(std::uint64_t count, const char* what) {
    return format("%llu %s%s", llu(count), what, count == 1 ? "" : "s");
}

double rateHz(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    return period == 0 ? 0.0 : kUsPerSecond / static_cast<double>(period);  // microseconds of a period are few
}

std::string distribution(const Histogram& values) {
    if (values.count() == 0) return "none";
    return format("median %llu, 95 %% up to %llu, largest %llu", llu(values.quantile(0.5)), llu(values.quantile(0.95)),
                  llu(values.max()));
}

std::string rate(const SensorStatistics& sensor) {
    if (sensor.periodUs.count() == 0) return "unknown";
    const std::string hz = format("%.0f Hz", rateHz(sensor));
    const double longestMs = static_cast<double>(sensor.periodUs.max()) / 1000.0;  // as above
    const std::string longest = format("longest step %.3f ms", longestMs);
    return hz + ", " + longest + ", " + counted(sensor.gaps(), "gap") + " above 2 periods";
}

std::string batches(const SensorStatistics& sensor) {
    return format("%llu filed, %llu of them split, %llu discarded, %llu empty", llu(sensor.filed), llu(sensor.split),
                  llu(sensor.discarded), llu(sensor.empty));
}

std::string gapHelp(const SensorStatistics& sensor) {
    return "the samples have " + counted(sensor.gaps(), "gap") +
           format(" of up to %.3f ms: look for what stops the hall sensor or its driver",
                  static_cast<double>(sensor.periodUs.max()) / 1000.0);  // as above
}

// Whether as many samples as the buffer holds at this rate are fewer than a query needs.
bool fillsTooSlowly(const SensorStatistics& sensor) {
    constexpr std::uint64_t kFrames = 30;
    constexpr std::uint64_t kNeeded = 100;
    return sensor.filed >= kFrames && (sensor.periodUs.count() + 1) * kFrames < kNeeded * sensor.filed;
}

// What there is to say of samples that are too far from the exposure start.
std::string farSamples(const SensorStatistics& sensor) {
    const std::uint64_t period = sensor.periodUs.quantile(0.5);
    if (period >= kLongestPeriodUs) {
        const double share = 1.0 - static_cast<double>(kLongestPeriodUs) / static_cast<double>(period);
        return format(
            "sample rate %.0f Hz: %.0f %% of all moments lie 1000 us or more from every sample; at 1 kHz none does",
            rateHz(sensor), 100.0 * share);
    }
    if (sensor.gaps() > 0) return gapHelp(sensor);
    return "ask for a frame before its samples leave the buffer, which keeps 30 hand-overs, and check that samples and "
           "frames share one clock";
}

// What helps against a reason; empty for a reason that needs no help.
std::string help(const SensorStatistics& sensor, Kind kind) {
    switch (kind) {
        case Kind::kNoMetadata:
            return "hand over the frame's metadata, not a null pointer";
        case Kind::kNoCalibration:
            return "the module's OTP memory or its layout record has no valid OIS calibration: see the error "
                   "message of ReadOTPInfo (--log)";
        case Kind::kTimingMissing:
            return "write start of frame and exposure block into the metadata before the call";
        case Kind::kNoMonitor:
            return "start the monitor (RegisterAndStartSensorMonitor) before the first frame, stop it after the last";
        case Kind::kNoStartOfFrame:
            return "give each exposure of a frame its own start of frame in the metadata";
        case Kind::kTooFewSamples:
            if (fillsTooSlowly(sensor)) {
                return format(
                    "the samples come too slowly (%.0f Hz) for 30 hand-overs to bring 100: at most %llu were "
                    "buffered",
                    rateHz(sensor), llu(sensor.without(kind).largest));
            }
            return "start the monitor earlier: the first 100 samples must be handed over before the first frame is "
                   "asked for";
        case Kind::kNoLaterSample:
            if (sensor.periodUs.max() >= sensor.without(kind).largest && sensor.gaps() > 0) return gapHelp(sensor);
            return format(
                "hand the samples over (UpdateSensorData) before the frame is asked for: they came up to %llu "
                "us short of its start",
                llu(sensor.without(kind).largest));
        case Kind::kNoNearSample:
            return farSamples(sensor);
        case Kind::kOneSample:
            return sensor.without(kind).largest == 0
                       ? "no rolling-shutter time is stored: call StoreRollingShutter for the mode in use"
                       : "the rolling shutter is short against the sample period: deliver samples more often";
        case Kind::kUnknownType:
        case Kind::kCalculationMode:
            return "use a type and a calculation mode that compute something";
        case Kind::kAlreadyWritten:
            break;
    }
    return {};
}

void print(std::ostream& out, const char* label, const std::string& text) {
    out << format("  %-22s", label) << text << '\n';
}

}  // namespace

std::vector<std::string> advice(const SensorStatistics& sensor) {
    std::vector<std::pair<std::uint64_t, std::string>> helps;  // exposures and what would help them
    for (std::size_t i = 0; i < Reason::kKinds; ++i) {
        const auto kind = static_cast<Kind>(i);  // the kinds count from 0
        const std::uint64_t count = sensor.without(kind).count;
        const std::string text = count > 0 ? help(sensor, kind) : std::string();
        if (text.empty()) continue;
        const auto same = std::ranges::find(helps, text, &std::pair<std::uint64_t, std::string>::second);
        if (same == helps.end()) {
            helps.emplace_back(count, text);
        } else {
            same->first += count;
        }
    }
    std::vector<std::string> lines;
    for (const auto& [count, text] : helps)
        lines.push_back(counted(count, "exposure") + ": " + text);
    if (sensor.discarded > 0) {
        lines.push_back(format("%llu discarded batch%s", llu(sensor.discarded), sensor.discarded == 1 ? "" : "es") +
                        ": deliver a batch only after those that begin before it");
    }
    return lines;
}

void printSummary(std::ostream& out, const Statistics& statistics) {
    for (const auto& [id, sensor] : statistics.sensors()) {
        out << "\nsensor " << id << '\n';
        print(out, "match distance (us)", distribution(sensor.matchUs));
        print(out, "span (samples)", distribution(sensor.spanSamples));
        print(out, "sample rate", rate(sensor));
        print(out, "batches", batches(sensor));
        const char* label = "what would help";
        for (const std::string& line : advice(sensor)) {
            print(out, label, line);
            label = "";
        }
    }
}

}  // namespace replay
