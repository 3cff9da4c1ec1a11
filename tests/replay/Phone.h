// Sessions of a modelled phone, of which anything can be spoilt.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "tests/support/Scene.h"

namespace test {

inline constexpr std::int64_t kBegin = 100'000 * kMs;

// What a phone does; five seconds of it at 60 frames a second.
struct Phone {
    int frames = 300;
    std::int64_t frameNs = 16'666'667;
    std::int64_t shutterNs = 15'980'000;  // as the driver gives it
    std::int64_t exposureNs = 5 * kMs;
    std::int64_t periodNs = kMs;         // of the hall sensor
    std::int64_t handOverNs = 14 * kMs;  // after the start of frame
    std::int64_t handOverJitterNs = 0;
    int firstAsked = 10;
    int askedAfter = 2;  // the frame's hand-over: so many hand-overs later
    std::int64_t sampleJitterNs = 30'000;
    std::function<std::int64_t(std::int64_t)> stamp = [](std::int64_t time) { return time; };
    std::function<std::int64_t(int)> repeatNs = [](int) { return 0; };  // what a frame's hand-over brings again
    std::function<bool(int)> handsOver = [](int) { return true; };
    std::function<bool(std::int64_t)> measures = [](std::int64_t) { return true; };
    std::function<void(std::string& line)> spell = [](std::string&) {};
    std::function<int(int)> order = [](int frame) { return frame; };  // which is handed over instead
};

// Writes the session of a phone.
class Session {
public:
    explicit Session(const Phone& phone) : mPhone(phone) {
        mOut
            << fmt::format(
                   R"({{"platform":"sensor","sensor":0,"otp_layout":{{"oisCalibration":{{"offset":4,"size":4,"valid":3,)"
                   R"("indexNum":1,"tableNumber":2}},"enable":1}},"otp":"0000000101020304","rolling_shutter":{{"0":{}}}}})",
                   phone.shutterNs)
            << '\n'
            << R"({"call":"RegisterAndStartSensorMonitor","sensor":0,"type":5})" << '\n'
            << R"({"call":"StoreRollingShutter","sensor":0,"mode":0})" << '\n';
        for (int frame = 0; frame < phone.frames; ++frame) {
            if (phone.handsOver(frame)) handOver(phone.order(frame));
            const int asked = frame - phone.askedAfter;
            if (asked >= phone.firstAsked && asked < phone.frames) ask(asked);
        }
    }

    std::string text() const {
        std::string text;
        std::istringstream lines(mOut.str());
        for (std::string line; std::getline(lines, line); text += line + '\n')
            mPhone.spell(line);
        return text;
    }

private:
    std::int64_t start(int frame) const { return kBegin + frame * mPhone.frameNs; }

    std::int64_t until(int frame) {
        const auto [known, isNew] = mUntil.try_emplace(frame, start(frame) + mPhone.handOverNs);
        if (isNew) known->second += jitter(mPhone.handOverJitterNs);
        return known->second;
    }

    std::int64_t jitter(std::int64_t range) {
        return range == 0 ? 0 : static_cast<std::int64_t>(mRandom() % static_cast<std::uint64_t>(2 * range)) - range;
    }

    void handOver(int frame) {
        const char* separator = "";
        mOut << R"({"samples":5,"data":[)";
        const std::int64_t begin = (until(frame - 1) - mPhone.repeatNs(frame)) / mPhone.periodNs;
        for (std::int64_t i = begin + 1; i <= until(frame) / mPhone.periodNs; ++i) {
            const std::int64_t time = i * mPhone.periodNs;
            if (!mPhone.measures(time)) continue;
            mOut << separator << fmt::format("[{},0,0,1,2]", mPhone.stamp(time + jitter(mPhone.sampleJitterNs)));
            separator = ",";
        }
        mOut << "]}\n"
             << fmt::format(R"({{"call":"UpdateSensorData","sensor":0,"frame":{},"timestamp":{}}})", frame,
                            start(frame))
             << '\n';
    }

    void ask(int frame) {
        mOut << fmt::format(R"({{"metadata":"m","entries":[{{"tag":"0xC0010017","int64":[{}]}},)"
                            R"({{"tag":"0xC0030000","memory":{{"size":4712,"u64":{{"4592":{}}}}}}}]}})",
                            start(frame), mPhone.exposureNs)
             << '\n'
             << R"({"call":"fillLscOISCompInfo","sensor":0,"metadata":"m"})" << '\n';
    }

    const Phone& mPhone;
    std::mt19937_64 mRandom{7};
    std::map<int, std::int64_t> mUntil;
    std::ostringstream mOut;
};

}  // namespace test
