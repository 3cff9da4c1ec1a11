// Puts the messages of one thread about monitors and about OTP memories together to calls.
#pragma once

#include <cstddef>
#include <optional>

#include "tools/import/Timeline.h"

namespace replay::import {

class MonitorAssembler {
public:
    // `timeline` must outlive the assembler.
    explicit MonitorAssembler(Timeline& timeline) : mTimeline(timeline) {}

    void take(const Registered& registered, std::size_t line);
    void take(const DeliveryStarted& started, std::size_t line);
    void take(const Started& started, std::size_t line);
    void take(const DeliveryEnded& ended, std::size_t line);
    void take(const Stopped& stopped, std::size_t line);
    void take(const StartFailed& failed, std::size_t line);
    // No more messages of its calls come.
    void letGo();

private:
    struct Open {
        Timeline::Place place;
        bool deliveryStarted = false;
        bool stopped = false;
    };
    RegisterCall& call() { return std::get<RegisterCall>(mOpen->place->data); }
    void close();

    Timeline& mTimeline;
    std::optional<Open> mOpen;
    std::optional<std::size_t> mUnregistered;  // line of a start whose registration is missing
};

class OtpAssembler {
public:
    explicit OtpAssembler(Timeline& timeline) : mTimeline(timeline) {}

    void take(const OtpLayout& layout, std::size_t line) { readOf(layout.sensor, line, true).layout = layout; }
    void take(const OtpGolden& golden, std::size_t line) { readOf(golden.sensor, line).golden = golden; }
    void take(const OtpCalibration& c, std::size_t line);
    void take(const OtpImplausible& block, std::size_t line);
    void take(const OtpAbsent& absent, std::size_t line);
    void letGo();

private:
    OtpRead& readOf(std::int32_t sensor, std::size_t line, bool first = false);

    Timeline& mTimeline;
    std::optional<Timeline::Place> mOpen;
};

}  // namespace replay::import
