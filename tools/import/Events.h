// What a message of the library says, as plain data: one event a message. Texts of an event point into the message.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <variant>

#include "tools/import/Scan.h"

namespace replay::import {

// ---- Samples

struct SampleReceived {  // one of a batch, in the order received; only with log level 4
    std::size_t index = 0;
    std::uint64_t timestamp = 0;  // ns
    Decimal oisX, oisY, hallX, hallY;
};
struct BatchDivided {  // by an overlap with the batch before
    std::int32_t frame = 0;
    std::size_t older = 0;  // samples left to each
    std::size_t newer = 0;
    std::uint64_t time = 0;  // ns
};
struct BatchFiled {
    std::uint32_t frame = 0;
    std::size_t count = 0;
    std::uint64_t first = 0;  // ns
    std::uint64_t last = 0;
};
struct BatchUpdated {  // ends a batch, also one that the buffer discarded
    std::uint32_t frame = 0;
    std::uint64_t timestamp = 0;  // ns, the call's
    std::size_t count = 0;        // after a division
    std::size_t queue = 0;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
};
struct BatchEmpty {
    std::int32_t type = 0;
};

// ---- Monitors

struct Registered {
    std::int32_t sensor = 0;
    std::int32_t type = 0;
    bool before = false;  // it had a monitor already
};
struct Started {
    std::int32_t sensor = 0;
};
struct DeliveryStarted {
    std::int32_t type = 0;
};
struct DeliveryEnded {
    std::int32_t type = 0;
};
struct Stopped {
    std::int32_t sensor = 0;
    std::size_t left = 0;
};
struct StartFailed {};
struct RollingShutter {
    std::int32_t sensor = 0;
    std::uint32_t time = 0;  // ns
    std::uint32_t mode = 0;
};

// ---- OTP

struct OtpLayout {
    std::int32_t sensor = 0;
    std::array<std::uint32_t, 5> multiGolden{};     // offset, size, valid, gradient, flag
    std::array<std::uint32_t, 5> oisCalibration{};  // offset, size, valid, indexNum, tableNumber
};
struct OtpAbsent {};
struct OtpGolden {
    std::int32_t sensor = 0;
    std::int32_t marker = 0;    // of the block; 1: valid
    std::int32_t index = 0;     // 0 when the block is not valid
    std::int32_t gradient = 0;  // signed
    std::int32_t flag = 0;
};
struct OtpCalibration {
    std::int32_t sensor = 0;
    std::int32_t marker = 0;  // 1: valid
};
struct OtpImplausible {  // a block that the library does not read
    std::int32_t sensor = 0;
    bool golden = false;  // otherwise the calibration
};
struct OtpTableQueried {
    std::int32_t sensor = 0;
    std::size_t length = 0;
    std::size_t size = 0;
};
struct IndexForced {
    std::int32_t index = 0;
};

// ---- Frames

struct ExposureMode {
    std::int32_t multi = 0;
};
struct AlreadyWritten {};
struct Timing {  // ns
    std::uint64_t sof = 0, sofNe = 0, sofSe = 0;
    std::uint64_t exposure = 0, exposureNe = 0, exposureSe = 0;
};
struct QueryStarted {
    std::size_t total = 0;  // samples buffered
};
struct Matched {
    std::size_t offset = 0;
    std::uint64_t timestamp = 0;  // ns
};
struct NothingMatched {};
struct QueryAnswered {
    std::uint32_t frame = 0;
    std::uint64_t timestamp = 0;  // ns
    std::size_t count = 0;
};
struct QueryEnded {
    std::size_t count = 0;
};
struct Calculation {
    std::int32_t sensor = 0;
    std::uint32_t type = 0;
    std::uint32_t count = 0;
    std::uint64_t startUs = 0;  // of the exposure
    std::uint64_t exposureUs = 0;
    std::uint32_t shutterUs = 0;
};
struct SampleUsed {  // one of those around the start of frame
    std::size_t index = 0;
    std::int64_t timeUs = 0;
    Decimal x, y;
};
struct SearchStep {};  // of a calculation that it does not name
struct SpanEntry {     // of the span that a position is made from
    std::uint64_t startUs = 0;
    std::int32_t count = 0;
};
struct MatchFailed {
    std::int32_t sensor = 0;
    std::uint32_t type = 0;
    std::uint32_t frame = 0;
    std::int64_t startUs = 0;
};
struct Position {
    std::int32_t sensor = 0;
    std::int32_t frame = 0;
    std::int32_t mode = 0;
    Decimal x, y;
};
struct ValuesFilled {
    std::int32_t type = 0;
};

// ---- The rest

struct Refused {  // a call for a sensor that there cannot be
    std::int32_t sensor = 0;
};
struct Other {};       // of the library, but nothing to rebuild a session from
struct Unreadable {};  // of the library's form, but cut or changed

using Event =
    std::variant<SampleUsed, SearchStep, SpanEntry, SampleReceived, BatchDivided, BatchFiled, BatchUpdated, BatchEmpty,
                 Registered, Started, DeliveryStarted, DeliveryEnded, Stopped, StartFailed, RollingShutter, OtpLayout,
                 OtpAbsent, OtpGolden, OtpCalibration, OtpImplausible, OtpTableQueried, IndexForced, ExposureMode,
                 AlreadyWritten, Timing, QueryStarted, Matched, NothingMatched, QueryAnswered, QueryEnded, Calculation,
                 MatchFailed, Position, ValuesFilled, Refused, Other, Unreadable>;

}  // namespace replay::import
