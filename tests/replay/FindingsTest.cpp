// Sessions with one fault each: the finding must name it, and nothing else but spans that run on for it. Healthy
// sessions have no finding. What is told is compared to the letter.
#include "tools/report/Findings.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <limits>
#include <span>
#include <sstream>
#include <string_view>

#include "tests/replay/Phone.h"
#include "tests/support/Scene.h"
#include "tools/play/Player.h"

namespace {

using test::kBegin;
using test::kMs;
using test::Phone;

std::vector<replay::Finding> findingsOf(const std::function<void(Phone&)>& spoil) {
    Phone phone;
    spoil(phone);
    std::istringstream session(test::Session(phone).text());
    replay::Statistics statistics;
    replay::PlayOptions options;
    options.observers = {&statistics};
    options.endMonitors = true;
    replay::play(session, options);
    test::dropCustomerObject();
    return replay::findings(statistics);
}

struct Case {
    std::string name;
    std::function<void(Phone&)> spoil;
};

// What is told about each case.
constexpr std::string_view kTold = R"(
usual

fast readout

dark

two kilohertz, repeated samples

before the frame is read

busy

every second frame

behind
  sample-clock-behind exposures 288 offset_us -2.986e+06 frame_interval_us 1.666e+04
    288 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 2986.334 ms before the time stamp of its frame

somewhat behind
  sample-clock-behind exposures 288 offset_us -3.633e+04 frame_interval_us 1.666e+04
    288 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 36.334 ms before the time stamp of its frame

in us
  sample-clock-behind exposures 288 offset_us -1.024e+08 frame_interval_us 1.666e+04
    288 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 102381.137 ms before the time stamp of its frame

ahead
  sample-clock-ahead exposures 288 offset_us 3.014e+06 frame_interval_us 1.666e+04
    288 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 3013.665 ms after the time stamp of its frame

ahead, but every frame gets a position
  sample-clock-ahead offset_us 5.366e+04 frame_interval_us 1.666e+04
    use one clock for samples and frames: in the median, the newest sample of a hand-over is 53.665 ms after the time stamp of its frame

fast
  sample-clock-drift drift_ppm 1000 total_us 4969
    use one clock for samples and frames: that of the samples is fast by 1000 ppm, 4.969 ms over the session

very fast
  sample-clock-drift drift_ppm 1e+04 total_us 4.967e+04
    use one clock for samples and frames: that of the samples is fast by 10000 ppm, 49.669 ms over the session

slow
  sample-clock-drift drift_ppm -999.6 total_us -4965
    use one clock for samples and frames: that of the samples is slow by 1000 ppm, 4.965 ms over the session

minutes ahead
  future-stamp exposures 235 frame 60 stamp_ns 6.01e+11 discarded 238
    235 exposures: find out why a sample is stamped in the future: after the time stamp 601000000000 ns, handed over with frame 60, 238 batches were discarded

an hour ahead
  future-stamp exposures 235 frame 60 stamp_ns 3.701e+12 discarded 238
    235 exposures: find out why a sample is stamped in the future: after the time stamp 3701000000000 ns, handed over with frame 60, 238 batches were discarded

at the end of time
  future-stamp exposures 235 frame 60 stamp_ns 9.223e+18 discarded 238
    235 exposures: find out why a sample is stamped in the future: after the time stamp 9223372036854775806 ns, handed over with frame 60, 238 batches were discarded

shutter double
  rolling-shutter rolling_shutter_us 3.196e+04 frame_interval_us 1.666e+04 factor 2
    the rolling shutter of 31.960 ms is too long for a frame interval of 16.663 ms: half of it would fit, so check whether it is counted twice

shutter in us
  rolling-shutter exposures 288 rolling_shutter_us 15.98 frame_interval_us 1.666e+04 factor 0.001
    288 exposures: the rolling shutter of 0.016 ms is about a thousandth of what fits a frame interval of 16.663 ms: give it in ns

shutter in ps
  rolling-shutter rolling_shutter_us 3e+06 frame_interval_us 1.666e+04 factor 1000
    the rolling shutter of 3000.000 ms is about a thousand times what fits a frame interval of 16.663 ms: give it in ns

no shutter
  no-rolling-shutter exposures 288
    288 exposures: call StoreRollingShutter for the mode in use: no rolling shutter is stored

more than the samples at hand
  short-spans used 71 expected 129
    hand over the samples of the whole readout before the frame is asked for, at a rate at which 50 of them cover it: the median span has 71 samples of 129 expected

far more
  high-rate exposures 288 largest 9502
    288 exposures: deliver samples less often: the library searches 50 from before the start of frame, which last less than an exposure

dropped
  missing-hand-overs exposures 6 missing 5 longest_gap_ms 83.97
    6 exposures: call UpdateSensorData for every frame: 5 frame numbers have no hand-over, and their samples are lost

dropped, samples come later
  missing-hand-overs missing 5 longest_gap_ms 0.974
    call UpdateSensorData for every frame: 5 frame numbers have no hand-over

late
  late-hand-overs exposures 290 largest 3362
    290 exposures: hand the samples over (UpdateSensorData) before the frame is asked for: the samples ended up to 3362 us before its start

early
  asked-too-early exposures 3 largest 83
    3 exposures: start the monitor earlier: 100 samples must be buffered before the first frame is asked for

after they left the buffer
  asked-too-late exposures 250 largest 1.896e+05
    250 exposures: ask for a frame while its samples are buffered (30 hand-overs are kept), and check that samples and frames share one clock

two in the wrong order
  discarded-batches exposures 1 discarded 1
    1 exposure: hand over each batch after those that begin before it: 1 batch was discarded
  long-spans spans 1 used 40 expected 17
    deliver a sample every millisecond: 1 of 287 spans went on past the readout, because no sample was within 1000 us of its end, and had up to 40 samples with 17 expected

jitter
  sample-jitter exposures 3 median_us 964 above_5_percent_us 2076
    3 exposures: read the hall sensor at even intervals, and take the time stamps then: the median interval is 964 us, but 5 % exceed 2076 us
  long-spans spans 5 used 56 expected 18
    deliver a sample every millisecond: 5 of 285 spans went on past the readout, because no sample was within 1000 us of its end, and had up to 56 samples with 18 expected

low rate
  low-rate exposures 172 rate_hz 200 buffered 0
    172 exposures: raise the sample rate to 1 kHz: at 200 Hz, 60 % of all moments lie 1000 us or more from every sample
  long-spans spans 11 used 12 expected 4
    deliver a sample every millisecond: 11 of 86 spans went on past the readout, because no sample was within 1000 us of its end, and had up to 12 samples with 4 expected

very low rate
  low-rate exposures 288 rate_hz 99.97 buffered 50
    288 exposures: at 100 Hz, 30 hand-overs hold fewer than 100 samples: at most 50 were buffered

few in a hand-over
  too-few-samples exposures 288 rate_hz 1000 buffered 63
    288 exposures: at 1000 Hz, 30 hand-overs hold fewer than 100 samples: at most 63 were buffered

one missing where a readout ends
  long-spans spans 1 used 55 expected 17
    deliver a sample every millisecond: 1 of 288 spans went on past the readout, because no sample was within 1000 us of its end, and had up to 55 samples with 17 expected

silent for 60 ms
  sample-gaps exposures 4 gaps 1 longest_ms 62.01
    4 exposures: find out what stops the hall sensor or its driver: the samples have a gap of 62.009 ms

no monitor
  no-monitor exposures 28
    28 exposures: start the monitor (RegisterAndStartSensorMonitor) before the first frame and stop it after the last

no calibration
  no-calibration exposures 28
    28 exposures: the module's OTP memory or its layout record has no valid OIS calibration: see the error message of ReadOTPInfo (--log)

no metadata
  no-metadata exposures 28
    28 exposures: pass the frame's metadata, not a null pointer

no exposure
  no-timing exposures 28
    28 exposures: write the start of frame and the exposure block into the metadata before the call

no start
  no-start-of-frame exposures 56
    56 exposures: give each exposure of a frame its own start of frame in the metadata

short shutter
  short-rolling-shutter exposures 288 largest 400
    288 exposures: deliver samples more often: the rolling shutter is short compared with the sample period

)";

// Each finding with its numbers.
std::string toldOf(const Case& its) {
    std::string told = "\n" + its.name + "\n";
    for (const auto& finding : findingsOf(its.spoil)) {
        told += "  " + finding.code;
        for (const auto& [name, value] : finding.numbers)
            told += fmt::format(" {} {:.4g}", name, value);
        told += "\n    " + replay::adviceOf(finding) + "\n";
    }
    return told;
}

void expectTold(std::span<const Case> cases) {
    for (const Case& its : cases)
        EXPECT_THAT(kTold, testing::HasSubstr(toldOf(its) + "\n")) << its.name;
}

auto shifted(std::int64_t byNs) {
    return [byNs](Phone& its) { its.stamp = [byNs](std::int64_t time) { return time + byNs; }; };
}

auto drifting(double ppm) {
    return [ppm](Phone& its) {
        its.stamp = [ppm](std::int64_t time) {
            return time + static_cast<std::int64_t>(static_cast<double>(time - kBegin) * ppm / 1e6);
        };
    };
}

// One sample of frame 60 carries this time stamp.
auto oneStamp(std::int64_t stamp) {
    return [stamp](Phone& its) {
        its.stamp = [stamp](std::int64_t time) { return time == kBegin + 1000 * kMs ? stamp : time; };
        its.sampleJitterNs = 0;
    };
}

auto spelled(const std::string& text, const std::string& instead) {
    return [=](Phone& its) {
        its.frames = 40;
        its.spell = [=](std::string& line) {
            if (const auto at = line.find(text); at != std::string::npos) line.replace(at, text.size(), instead);
        };
    };
}

auto withShutter(std::int64_t ns) {
    return [ns](Phone& its) { its.shutterNs = ns; };
}

TEST(Findings, AHealthySessionHasNone) {
    const Case cases[] = {
        {"usual", [](Phone&) {}},
        {"fast readout", withShutter(4 * kMs)},
        {"dark", [](Phone& its) { its.frameNs = 33'333'333, its.exposureNs = 30 * kMs; }},
        {"two kilohertz, repeated samples",
         [](Phone& its) { its.periodNs = kMs / 2, its.repeatNs = [](int) { return 2 * kMs; }; }},
        {"before the frame is read", [](Phone& its) { its.handOverNs = 0, its.askedAfter = 3; }},
        {"busy", [](Phone& its) { its.handOverJitterNs = 3 * kMs; }},
        {"every second frame",
         [](Phone& its) {
             its.handsOver = [](int frame) { return frame % 2 == 0; }, its.askedAfter = 4,
             its.repeatNs = [](int) { return 17 * kMs; };
         }},
    };
    expectTold(cases);
}

TEST(Findings, NameAClockThatIsOff) {
    const Case cases[] = {
        {"behind", shifted(-3000 * kMs)},
        {"somewhat behind", shifted(-50 * kMs)},
        {"in us", [](Phone& its) { its.stamp = [](std::int64_t time) { return time / 1000; }; }},
        {"ahead", shifted(3000 * kMs)},
        {"ahead, but every frame gets a position", shifted(40 * kMs)},
        {"fast", drifting(1000)},
        {"very fast", drifting(10000)},
        {"slow", drifting(-1000)},
        {"minutes ahead", oneStamp(kBegin + 501'000 * kMs)},
        {"an hour ahead", oneStamp(kBegin + 3'601'000 * kMs)},
        {"at the end of time", oneStamp(std::numeric_limits<std::int64_t>::max() - 1)},
    };
    expectTold(cases);
}

TEST(Findings, NameARollingShutterThatDoesNotFit) {
    const Case cases[] = {
        {"shutter double", withShutter(31'960'000)},
        {"shutter in us", withShutter(15'980)},
        {"shutter in ps", withShutter(3'000'000'000)},
        {"no shutter", withShutter(0)},
        {"more than the samples at hand", [](Phone& its) { its.periodNs = kMs / 8, its.exposureNs = kMs; }},
        {"far more", [](Phone& its) { its.periodNs = kMs / 8, its.exposureNs = 10 * kMs; }},
    };
    expectTold(cases);
}

TEST(Findings, NameHandOversThatAreMissingOrLate) {
    const auto dropped = [](int frame) { return frame < 100 || frame >= 105; };
    const Case cases[] = {
        {"dropped", [&](Phone& its) { its.handsOver = dropped; }},
        {"dropped, samples come later",
         [&](Phone& its) {
             its.handsOver = dropped, its.repeatNs = [](int frame) { return frame == 105 ? 83 * kMs : 0; },
             its.askedAfter = 8;
         }},
        {"late", [](Phone& its) { its.askedAfter = -1; }},
        {"early", [](Phone& its) { its.firstAsked = 0; }},
        {"after they left the buffer", [](Phone& its) { its.askedAfter = 40; }},
        {"two in the wrong order",
         [](Phone& its) { its.order = [](int frame) { return frame / 2 == 50 ? 201 - frame : frame; }; }},
    };
    expectTold(cases);
}

TEST(Findings, NameWhatIsWrongWithTheSamples) {
    const Case cases[] = {
        {"jitter", [](Phone& its) { its.sampleJitterNs = 900'000; }},
        {"low rate", [](Phone& its) { its.periodNs = 5 * kMs, its.firstAsked = 40; }},
        {"very low rate", [](Phone& its) { its.periodNs = 10 * kMs; }},
        {"few in a hand-over",
         [](Phone& its) { its.frameNs = 2'083'333, its.shutterNs = 1'500'000, its.exposureNs = its.handOverNs = kMs; }},
        {"one missing where a readout ends",
         [](Phone& its) {
             its.shutterNs = 16 * kMs, its.sampleJitterNs = 0,
             its.measures = [](std::int64_t time) { return time != kBegin + 1008 * kMs; };
         }},
        {"silent for 60 ms",
         [](Phone& its) {
             its.measures = [](std::int64_t time) { return std::abs(time - kBegin - 3000 * kMs) > 30 * kMs; };
         }},
    };
    expectTold(cases);
}

TEST(Findings, NameWhatACallLacks) {
    const std::string none = R"({"platform":"journal","on":false})";
    const Case cases[] = {
        {"no monitor", spelled(R"({"call":"RegisterAndStartSensorMonitor","sensor":0,"type":5})", none)},
        {"no calibration", spelled("0000000101020304", "0000000001020304")},
        {"no metadata", spelled(R"("metadata":"m"})", R"("metadata":null})")},
        {"no exposure", spelled("0xC0030000", "0xC0030001")},
        {"no start", spelled("[{\"tag\":", R"([{"tag":"0xC00A0002","int32":[8]},{"tag":)")},
        {"short shutter", withShutter(400'000)},
    };
    expectTold(cases);
}

}  // namespace
