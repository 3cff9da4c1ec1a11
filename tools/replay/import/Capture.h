// What a capture says the platform did: the calls into the library as far as their messages tell, what is known of each
// sensor, and where the capture has holes. Plain data: the assemblers fill it, the session writer reads it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "tools/replay/import/Events.h"

namespace replay::import {

// UpdateSensorData.
struct UpdateCall {
    std::optional<std::uint32_t> frame;
    std::uint64_t timestamp = 0;         // ns, 0: unknown
    std::optional<std::int32_t> sensor;  // no message tells; set where other messages do
    std::optional<std::int32_t> type;
    std::size_t thread = 0;  // a number for each thread of the capture
    std::size_t samples = 0;
    std::string data;          // the samples as a session's rows, separated by commas
    std::string hole;          // what is missing, or empty
    bool frameKnown = true;    // false: assumed from the batch before
    bool samplesLost = false;  // none of its samples is in the capture
};

// What came of one exposure of a frame.
struct ExposureCall {
    enum class Outcome { kUnknown, kNone, kPosition };

    Calculation calculation;                 // times are 0 where its line was lost
    std::optional<std::uint64_t> timestamp;  // ns, of the query for samples
    Outcome outcome = Outcome::kUnknown;
    std::int32_t frame = 0;
    std::string x, y;  // as printed
};

// fillLscOISCompInfo; without timing, or on its own, the CalcOISValue calls in it.
struct FrameCall {
    std::optional<std::int32_t> sensor;
    std::optional<bool> multi;
    bool written = false;  // by an earlier call
    std::optional<Timing> timing;
    std::vector<ExposureCall> exposures;
    std::size_t thread = 0;
};

struct RegisterCall {
    std::int32_t sensor = 0;
    std::optional<std::int32_t> type;
    bool started = true;
    bool hadProvider = true;  // when it did not start
};
struct UnregisterCall {
    std::int32_t sensor = 0;
};
struct OtpReadCall {  // whichever call asked first
    std::int32_t sensor = 0;
};

using CallData = std::variant<UpdateCall, FrameCall, RegisterCall, UnregisterCall, RollingShutter, OtpReadCall,
                              OtpTableQueried, IndexForced>;

struct Call {
    std::size_t line = 0;  // of the capture: where the call took the registry's lock, as near as messages tell
    CallData data;
};

// What the messages say of a sensor's OTP memory.
struct OtpFacts {
    std::optional<OtpLayout> layout;
    std::optional<OtpGolden> golden;
    std::optional<OtpCalibration> calibration;
    bool absent = false;
};

struct Note {
    std::size_t line = 0;
    std::string text;
};

struct Capture {
    void add(std::size_t line, CallData data);
    void addHole(std::size_t line, std::string text);

    std::vector<Call> calls;  // by line, once the capture is read
    std::map<std::int32_t, OtpFacts> otp;
    std::vector<Note> holes;
    bool everySample = false;  // messages that only log level 4 lets through
    std::optional<std::int32_t> calculationMode;
    std::optional<std::int32_t> forcedIndex;
    std::size_t ownLines = 0;
    std::size_t foreignLines = 0;
    std::size_t doubledLines = 0;
    std::size_t otherProcesses = 0;  // library lines of other processes

    // The newest sample of each batch, by a hash, and the batch's place in `calls`: the samples that a calculation
    // lists tell the sensor.
    std::unordered_map<std::size_t, std::size_t> newestSamples;
};

}  // namespace replay::import
