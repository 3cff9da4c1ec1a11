// Sessions with one fault each: the finding must name it, and nothing else but spans that run on for it. Healthy
// sessions have no finding.
#include "tools/report/Findings.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <sstream>

#include "tests/support/Scene.h"
#include "tools/play/Player.h"

namespace {

using test::kMs;

constexpr std::int64_t kBegin = 100'000 * kMs;

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

    std::string text() const { return mOut.str(); }

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

std::vector<replay::Finding> findingsOf(const std::function<void(Phone&)>& spoil) {
    Phone phone;
    spoil(phone);
    std::istringstream session(Session(phone).text());
    replay::Statistics statistics;
    replay::PlayOptions options;
    options.observers = {&statistics};
    options.endMonitors = true;
    replay::play(session, options);
    return replay::findings(statistics);
}

struct Case {
    std::string name;
    std::function<void(Phone&)> spoil;
    std::string codes;
    std::string number = {};  // one of the first finding's, and what it must be close to
    double value = 0.0;
};

void expectFindings(const Case& its) {
    SCOPED_TRACE(its.name);
    std::string codes;
    const auto found = findingsOf(its.spoil);
    for (const auto& finding : found)
        codes += (codes.empty() ? "" : " ") + finding.code;
    ASSERT_EQ(codes, its.codes) << (found.empty() ? "" : replay::adviceOf(found.back()));
    if (its.number.empty()) return;
    const std::map<std::string, double> numbers(found[0].numbers.begin(), found[0].numbers.end());
    ASSERT_TRUE(numbers.contains(its.number));
    EXPECT_NEAR(numbers.at(its.number), its.value, std::abs(its.value) * 0.02) << its.number;
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

auto withShutter(std::int64_t ns) {
    return [ns](Phone& its) { its.shutterNs = ns; };
}

TEST(Findings, AHealthySessionHasNone) {
    const Case cases[] = {
        {"usual", [](Phone&) {}, ""},
        {"fast readout", withShutter(4 * kMs), ""},
        {"dark", [](Phone& its) { its.frameNs = 33'333'333, its.exposureNs = 30 * kMs; }, ""},
        {"two kilohertz, repeated samples",
         [](Phone& its) { its.periodNs = kMs / 2, its.repeatNs = [](int) { return 2 * kMs; }; }, ""},
        {"before the frame is read", [](Phone& its) { its.handOverNs = 0, its.askedAfter = 3; }, ""},
        {"busy", [](Phone& its) { its.handOverJitterNs = 3 * kMs; }, ""},
        {"every second frame",
         [](Phone& its) {
             its.handsOver = [](int frame) { return frame % 2 == 0; }, its.askedAfter = 4,
             its.repeatNs = [](int) { return 17 * kMs; };
         },
         ""},
    };
    for (const Case& its : cases)
        expectFindings(its);
}

TEST(Findings, NameAClockThatIsOff) {
    const Case cases[] = {
        {"behind", shifted(-3000 * kMs), "sample-clock-behind", "offset_us", -2'986'500},
        {"somewhat behind", shifted(-50 * kMs), "sample-clock-behind", "offset_us", -36'500},
        {"in us", [](Phone& its) { its.stamp = [](std::int64_t time) { return time / 1000; }; }, "sample-clock-behind",
         "offset_us", -102.4e6},
        {"ahead", shifted(3000 * kMs), "sample-clock-ahead", "offset_us", 3'013'500},
        {"ahead, but every frame gets a position", shifted(40 * kMs), "sample-clock-ahead", "offset_us", 53'500},
        {"fast", drifting(1000), "sample-clock-drift", "drift_ppm", 1000},
        {"very fast", drifting(10000), "sample-clock-drift", "drift_ppm", 10000},
        {"slow", drifting(-1000), "sample-clock-drift", "drift_ppm", -1000},
        {"minutes ahead", oneStamp(kBegin + 501'000 * kMs), "future-stamp", "frame", 60},
        {"an hour ahead", oneStamp(kBegin + 3'601'000 * kMs), "future-stamp", "stamp_ns", 3'701e9},
        {"at the end of time", oneStamp(std::numeric_limits<std::int64_t>::max()), "future-stamp", "frame", 60},
    };
    for (const Case& its : cases)
        expectFindings(its);
}

TEST(Findings, TheAdviceOnAStampOfTheFutureNamesItExactly) {
    const auto found = findingsOf(oneStamp(std::numeric_limits<std::int64_t>::max() - 1));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(replay::adviceOf(found[0]),
              "235 exposures: find out why a sample is stamped in the future: after the time stamp 9223372036854775806 "
              "ns, handed over with frame 60, 238 batches were discarded");
}

TEST(Findings, NameARollingShutterThatDoesNotFit) {
    const Case cases[] = {
        {"double", withShutter(31'960'000), "rolling-shutter", "factor", 2},
        {"in us", withShutter(15'980), "rolling-shutter", "factor", 0.001},
        {"in ps", withShutter(3'000'000'000), "rolling-shutter", "factor", 1000},
        {"none", withShutter(0), "no-rolling-shutter", "exposures", 288},
        {"more than the samples at hand", [](Phone& its) { its.periodNs = kMs / 8, its.exposureNs = kMs; },
         "short-spans", "expected", 129},
        {"far more", [](Phone& its) { its.periodNs = kMs / 8, its.exposureNs = 10 * kMs; }, "high-rate", "exposures",
         288},
    };
    for (const Case& its : cases)
        expectFindings(its);
}

TEST(Findings, NameHandOversThatAreMissingOrLate) {
    const auto dropped = [](int frame) { return frame < 100 || frame >= 105; };
    const Case cases[] = {
        {"dropped", [&](Phone& its) { its.handsOver = dropped; }, "missing-hand-overs", "missing", 5},
        {"dropped, samples come later",
         [&](Phone& its) {
             its.handsOver = dropped, its.repeatNs = [](int frame) { return frame == 105 ? 83 * kMs : 0; },
             its.askedAfter = 8;
         },
         "missing-hand-overs", "missing", 5},
        {"late", [](Phone& its) { its.askedAfter = -1; }, "late-hand-overs", "exposures", 290},
        {"early", [](Phone& its) { its.firstAsked = 0; }, "asked-too-early", "exposures", 3},
        {"after they left the buffer", [](Phone& its) { its.askedAfter = 40; }, "asked-too-late", "exposures", 250},
        {"two in the wrong order",
         [](Phone& its) { its.order = [](int frame) { return frame / 2 == 50 ? 201 - frame : frame; }; },
         "discarded-batches long-spans", "discarded", 1},
    };
    for (const Case& its : cases)
        expectFindings(its);
}

TEST(Findings, NameWhatIsWrongWithTheSamples) {
    const Case cases[] = {
        {"jitter", [](Phone& its) { its.sampleJitterNs = 900'000; }, "sample-jitter long-spans"},
        {"low rate", [](Phone& its) { its.periodNs = 5 * kMs, its.firstAsked = 40; }, "low-rate long-spans", "rate_hz",
         200},
        {"very low rate", [](Phone& its) { its.periodNs = 10 * kMs; }, "low-rate", "rate_hz", 100},
        {"few in a hand-over",
         [](Phone& its) { its.frameNs = 2'083'333, its.shutterNs = 1'500'000, its.exposureNs = its.handOverNs = kMs; },
         "too-few-samples", "buffered", 62},
        {"one missing where a readout ends",
         [](Phone& its) {
             its.shutterNs = 16 * kMs, its.sampleJitterNs = 0,
             its.measures = [](std::int64_t time) { return time != kBegin + 1008 * kMs; };
         },
         "long-spans", "spans", 1},
        {"silent for 60 ms",
         [](Phone& its) {
             its.measures = [](std::int64_t time) { return std::abs(time - kBegin - 3000 * kMs) > 30 * kMs; };
         },
         "sample-gaps", "longest_ms", 62},
    };
    for (const Case& its : cases)
        expectFindings(its);
}

}  // namespace
