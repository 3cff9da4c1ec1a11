// What findings tell of each spoiled session of FindingsTest.cpp, to the letter.
#pragma once

#include <string_view>

namespace test {

inline constexpr std::string_view kTold = R"(
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

set ahead
  sample-clock-step exposures 147 steps 1 largest_us 3e+06
    147 exposures: use one clock for samples and frames: that of the samples was set ahead by 2999.996 ms

set somewhat ahead
  sample-clock-step exposures 3 steps 1 largest_us 5e+04
    3 exposures: use one clock for samples and frames: that of the samples was set ahead by 49.996 ms

all at 0
  sample-clock-behind exposures 288 offset_us -1.025e+08 frame_interval_us 1.666e+04
    288 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 102483.199 ms before the time stamp of its frame

frames in us
  sample-clock-ahead offset_us 1.024e+08 frame_interval_us 16
    use one clock for samples and frames: in the median, the newest sample of a hand-over is 102395.130 ms after the time stamp of its frame

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
    288 exposures: the rolling shutter of 0.01598 ms is about a thousandth of what fits a frame interval of 16.663 ms: give it in ns

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

one dropped, samples come later
  missing-hand-overs exposures 1 missing 1 longest_gap_ms 0.997
    1 exposure: call UpdateSensorData for every frame: 1 frame number has no hand-over

every tenth dropped
  missing-hand-overs exposures 29 missing 30 longest_gap_ms 18.03
    29 exposures: call UpdateSensorData for every frame: 30 frame numbers have no hand-over, and their samples are lost

late
  late-hand-overs exposures 290 largest 3362
    290 exposures: hand the samples over (UpdateSensorData) before the frame is asked for: the samples ended up to 3362 us before its start

late from the first frame on
  late-hand-overs exposures 299 largest 3363
    299 exposures: hand the samples over (UpdateSensorData) before the frame is asked for: the samples ended up to 3363 us before its start

early
  asked-too-early exposures 3 largest 83
    3 exposures: start the monitor earlier: 100 samples must be buffered before the first frame is asked for

after they left the buffer
  asked-too-late exposures 250 largest 1.896e+05
    250 exposures: ask for a frame while its samples are buffered (30 hand-overs are kept), and check that samples and frames share one clock

two in the wrong order
  discarded-batches exposures 1 discarded 1
    1 exposure: hand over each batch after those that begin before it: 1 batch was discarded

one again and again
  discarded-batches exposures 148 discarded 150
    148 exposures: hand over each batch after those that begin before it: 150 batches were discarded

jitter
  sample-jitter exposures 3 median_us 964 above_5_percent_us 2076
    3 exposures: read the hall sensor at even intervals, and take the time stamps then: the median interval is 964 us, but 5 % exceed 2076 us

low rate
  low-rate exposures 172 rate_hz 200 buffered 0
    172 exposures: raise the sample rate to 1 kHz: at 200 Hz, 60 % of all moments lie 1000 us or more from every sample

very low rate
  low-rate exposures 288 rate_hz 99.97 buffered 50
    288 exposures: raise the sample rate to 1 kHz: at 100 Hz, 30 hand-overs hold fewer than 100 samples, and at most 50 were buffered

few in a hand-over
  too-few-samples exposures 288 rate_hz 1000 buffered 63
    288 exposures: raise the sample rate, or hand over less often: at 1000 Hz, 30 hand-overs hold fewer than 100 samples, and at most 63 were buffered

one missing where a readout ends
  long-spans spans 1 used 55 expected 17
    deliver a sample every millisecond: 1 of 288 spans went on past the readout, because no sample was within 1000 us of its end, and had up to 55 samples with 17 expected

silent for 60 ms
  sample-gaps exposures 4 gaps 1 longest_ms 62.01
    4 exposures: find out what stops the hall sensor or its driver: the samples have a gap of 62.009 ms

silent from the middle on
  sample-gaps exposures 148 empty_last 149
    148 exposures: find out what stops the hall sensor or its driver: the last 149 hand-overs had no sample

silent for the last 100 ms
  sample-gaps exposures 3 empty_last 5
    3 exposures: find out what stops the hall sensor or its driver: the last 5 hand-overs had no sample

silent for the first second
  sample-gaps exposures 54 empty_first 60
    54 exposures: find out what stops the hall sensor or its driver: the first 60 hand-overs had no sample

silent all the time
  sample-gaps exposures 299 empty_first 300
    299 exposures: find out what stops the hall sensor or its driver: no hand-over had a sample

fast, and silent for 60 ms
  sample-clock-drift drift_ppm 1000 total_us 4985
    use one clock for samples and frames: that of the samples is fast by 1000 ppm, 4.985 ms over the session
  sample-gaps exposures 4 gaps 1 longest_ms 62.07
    4 exposures: find out what stops the hall sensor or its driver: the samples have a gap of 62.071 ms

ahead, and silent for 60 ms
  sample-clock-ahead offset_us 5.366e+04 frame_interval_us 1.666e+04
    use one clock for samples and frames: in the median, the newest sample of a hand-over is 53.664 ms after the time stamp of its frame
  sample-gaps exposures 3 gaps 1 longest_ms 62.01
    3 exposures: find out what stops the hall sensor or its driver: the samples have a gap of 62.009 ms

behind, and silent from the middle on
  sample-clock-behind exposures 288 offset_us -2.986e+06 frame_interval_us 1.666e+04
    288 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 2986.338 ms before the time stamp of its frame

behind, and one dropped
  sample-clock-behind exposures 290 offset_us -2.986e+06 frame_interval_us 1.666e+04
    290 exposures: use one clock for samples and frames: in the median, the newest sample of a hand-over is 2986.331 ms before the time stamp of its frame
  missing-hand-overs missing 1 longest_gap_ms 16.97
    call UpdateSensorData for every frame: 1 frame number has no hand-over, and their samples are lost

set ahead, and silent for 60 ms
  sample-clock-step exposures 147 steps 1 largest_us 3e+06
    147 exposures: use one clock for samples and frames: that of the samples was set ahead by 2999.983 ms
  sample-gaps exposures 4 gaps 1 longest_ms 62.02
    4 exposures: find out what stops the hall sensor or its driver: the samples have a gap of 62.025 ms

dropped, and silent for 60 ms
  missing-hand-overs exposures 6 missing 5 longest_gap_ms 83.97
    6 exposures: call UpdateSensorData for every frame: 5 frame numbers have no hand-over, and their samples are lost
  sample-gaps exposures 4 gaps 1 longest_ms 62.03
    4 exposures: find out what stops the hall sensor or its driver: the samples have a gap of 62.026 ms

fast, and late
  sample-clock-drift drift_ppm 1000 total_us 4969
    use one clock for samples and frames: that of the samples is fast by 1000 ppm, 4.969 ms over the session
  short-spans used 10 expected 17
    hand over the samples of the whole readout before the frame is asked for, at a rate at which 50 of them cover it: the median span has 10 samples of 17 expected
  late-hand-overs exposures 171 largest 3167
    171 exposures: hand the samples over (UpdateSensorData) before the frame is asked for: the samples ended up to 3167 us before its start

shutter in us, and low rate
  rolling-shutter exposures 86 rolling_shutter_us 15.98 frame_interval_us 1.666e+04 factor 0.001
    86 exposures: the rolling shutter of 0.01598 ms is about a thousandth of what fits a frame interval of 16.663 ms: give it in ns
  low-rate exposures 172 rate_hz 200 buffered 0
    172 exposures: raise the sample rate to 1 kHz: at 200 Hz, 60 % of all moments lie 1000 us or more from every sample

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

}  // namespace test
