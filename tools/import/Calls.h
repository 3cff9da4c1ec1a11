// What a capture tells of the library's calls, as plain data: the assemblers make them of events, the session is made
// of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "customer/aaa/aaa/lsc/SampleBatch.h"
#include "tools/import/Events.h"

namespace replay::import {

// UpdateSensorData: samples handed over to a monitor. No message names the sensor.
struct HandOver {
    std::size_t lane = 0;  // a number for each thread, or process where threads are not known
    lsc::Samples samples;  // in the order received
    std::optional<BatchDivided> divided;
    std::optional<BatchFiled> filed;
    std::optional<BatchUpdated> updated;
    std::optional<std::int32_t> emptyType;  // nothing was there to hand over
    std::size_t skipped = 0;                // samples that the indexes skip

    // How often calculations of a sensor listed its samples, or ought to have and did not.
    struct Votes {
        std::size_t listed = 0;
        std::size_t missed = 0;
    };
    std::map<std::int32_t, Votes> votes;

    // The one sensor whose calculations list it.
    std::optional<std::int32_t> listedBy() const;

    std::optional<std::uint32_t> frame() const;
    // Times of its earliest and its latest sample (ns); there must be one.
    std::int64_t firstNs() const;
    std::int64_t lastNs() const;
    // The buffer discarded it, or the message that it was filed is missing.
    bool isUnfiled() const { return updated && !filed && !divided; }
};

// A sample as a calculation lists it.
struct Listed {
    std::int64_t timeUs = 0;
    float x = 0;
    float y = 0;
};

// A query for the samples around a time.
struct Query {
    std::size_t line = 0;
    std::optional<std::size_t> total;
    std::optional<Matched> matched;
    bool nothing = false;  // no data matched
    std::optional<QueryAnswered> answered;
    bool ended = false;
};

// One exposure of a frame, and what came of it.
struct Exposure {
    enum class Outcome { kUnknown, kNone, kPosition };

    std::optional<Calculation> calculation;
    std::size_t line = 0;  // of the capture, of its calculation
    std::optional<Query> query;
    std::vector<Listed> listing;
    std::size_t missing = 0;   // of the listing
    std::size_t unbroken = 0;  // entries before the first that is missing
    bool trusted = true;       // the listing is this calculation's throughout
    std::size_t spanSeen = 0;
    Outcome outcome = Outcome::kUnknown;
    std::uint32_t frame = 0;
    std::int32_t mode = 0;
    double x = 0, y = 0;
    std::string xText, yText;  // as printed
    bool filled = false;
    bool whole = false;      // every message from its calculation to its result is there
    bool proven = false;     // its listing gives its position
    bool contested = false;  // another calculation of the sensor waited for the message as well

    bool isListed() const { return calculation && calculation->count != 0 && listing.size() == calculation->count; }
    bool isOver() const { return outcome != Outcome::kUnknown; }
    // The start of frame, of one that has a calculation.
    std::uint64_t startUs() const { return calculation->startUs + calculation->exposureUs; }
};

// fillLscOISCompInfo; without mode and timing, the CalcOISValue call in it, or one on its own.
struct Frame {
    std::size_t lane = 0;
    std::optional<bool> multi;
    bool written = false;   // by an earlier call
    bool doubtful = false;  // perhaps a doubled message
    std::optional<Timing> timing;
    std::vector<Exposure> exposures;

    std::optional<std::int32_t> sensor() const;
    // A query whose calculation is not there.
    bool isQueryAlone() const { return exposures.size() == 1 && !exposures.front().calculation; }
};

struct RegisterCall {
    std::int32_t sensor = 0;
    std::optional<std::int32_t> type;
    bool started = true;
    bool hadProvider = true;  // when it did not start
    bool before = false;      // it had a monitor already
};
struct UnregisterCall {
    std::int32_t sensor = 0;
    std::optional<std::size_t> left;  // monitors
};

// What the messages say of a sensor's OTP memory. Whichever call asked first read it.
struct OtpRead {
    std::int32_t sensor = 0;
    std::optional<OtpLayout> layout;
    std::optional<OtpGolden> golden;
    std::optional<OtpCalibration> calibration;
    bool absent = false;
    bool goldenOutside = false;  // of the memory
    bool calibrationOutside = false;
};

// Something is uncertain at this place.
struct Doubt {
    std::string text;
};
inline constexpr std::string_view kUnreadableMessage = "a message of the library that is cut or changed; left out";

using CallData = std::variant<HandOver, Frame, RegisterCall, UnregisterCall, RollingShutter, OtpRead, OtpTableQueried,
                              IndexForced, Doubt>;

struct Call {
    std::size_t line = 0;  // of the capture: where the call took the registry's lock, as near as messages tell
    bool open = false;     // messages of it may follow
    CallData data;
};

}  // namespace replay::import
