// Sessions with one fault each: the finding must name it, and nothing else. Of two faults each has the exposures that
// it spoils. Healthy sessions have no finding. What is told is compared to the letter.
#include "tools/report/Findings.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <span>
#include <sstream>
#include <string_view>

#include "tests/replay/Phone.h"
#include "tests/replay/Told.h"
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

constexpr std::int64_t kMiddle = kBegin + 2500 * kMs;  // of a session

struct Case {
    std::string name;
    std::function<void(Phone&)> spoil;
};

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
        EXPECT_THAT(test::kTold, testing::HasSubstr(toldOf(its) + "\n")) << its.name;
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

auto setAhead(std::int64_t byNs) {
    return
        [byNs](Phone& its) { its.stamp = [byNs](std::int64_t time) { return time < kMiddle ? time : time + byNs; }; };
}

// The hall sensor gives nothing from one time to another.
auto silent(std::int64_t fromMs, std::int64_t toMs) {
    return [=](Phone& its) {
        its.measures = [=](std::int64_t time) { return time < kBegin + fromMs * kMs || time > kBegin + toMs * kMs; };
    };
}

auto both(const std::function<void(Phone&)>& one, const std::function<void(Phone&)>& other) {
    return [=](Phone& its) { one(its), other(its); };
}

bool dropsFive(int frame) {
    return frame < 100 || frame >= 105;
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
        {"set ahead", setAhead(3000 * kMs)},
        {"set somewhat ahead", setAhead(50 * kMs)},
        {"all at 0", [](Phone& its) { its.stamp = [](std::int64_t) { return 0; }; }},
        {"frames in us",
         [](Phone& its) {
             its.spell = [](std::string& line) {
                 if (line.find("UpdateSensorData") != std::string::npos) line.erase(line.size() - 4, 3);
             };
         }},
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
    const Case cases[] = {
        {"dropped", [](Phone& its) { its.handsOver = dropsFive; }},
        {"dropped, samples come later",
         [](Phone& its) {
             its.handsOver = dropsFive, its.repeatNs = [](int frame) { return frame == 105 ? 83 * kMs : 0; },
             its.askedAfter = 8;
         }},
        {"one dropped, samples come later",
         [](Phone& its) {
             its.handsOver = [](int frame) { return frame != 100; }, its.askedAfter = 0;
             its.repeatNs = [](int frame) { return frame == 101 ? 17 * kMs : 0; };
         }},
        {"every tenth dropped", [](Phone& its) { its.handsOver = [](int frame) { return frame % 10 != 5; }; }},
        {"late", [](Phone& its) { its.askedAfter = -1; }},
        {"late from the first frame on",
         [](Phone& its) {
             its.firstAsked = 0, its.askedAfter = -1, its.handsOver = [](int frame) { return frame > 0; };
             its.repeatNs = [](int frame) { return frame == 1 ? 200 * kMs : 0; };
         }},
        {"early", [](Phone& its) { its.firstAsked = 0; }},
        {"after they left the buffer", [](Phone& its) { its.askedAfter = 40; }},
        {"two in the wrong order",
         [](Phone& its) { its.order = [](int frame) { return frame / 2 == 50 ? 201 - frame : frame; }; }},
        {"one again and again",
         [](Phone& its) {
             its.spell = [count = 0, batch = std::string()](std::string& line) mutable {
                 if (line.find("samples") == std::string::npos) return;
                 ++count > 150 ? line = batch : batch = line;
             };
         }},
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
        {"silent for 60 ms", silent(2970, 3030)},
        {"silent from the middle on", silent(2500, 9000)},
        {"silent for the last 100 ms", silent(4914, 9000)},
        {"silent for the first second", silent(-1000, 1000)},
        {"silent all the time", both(silent(-1000, 9000), [](Phone& its) { its.firstAsked = 0, its.askedAfter = -1; })},
    };
    expectTold(cases);
}

TEST(Findings, CountAnExposureToTheCauseAtItsPlace) {
    const auto gap = silent(2970, 3030);
    const Case cases[] = {
        {"fast, and silent for 60 ms", both(drifting(1000), gap)},
        {"ahead, and silent for 60 ms", both(shifted(40 * kMs), gap)},
        {"behind, and silent from the middle on", both(shifted(-3000 * kMs), silent(2500, 9000))},
        {"behind, and one dropped",
         both(shifted(-3000 * kMs),
              [](Phone& its) { its.handsOver = [](int frame) { return frame != 100; }, its.askedAfter = 0; })},
        {"set ahead, and silent for 60 ms", both(setAhead(3000 * kMs), silent(1970, 2030))},
        {"dropped, and silent for 60 ms", both([](Phone& its) { its.handsOver = dropsFive; }, gap)},
        {"fast, and late", both(drifting(1000), [](Phone& its) { its.askedAfter = -1; })},
        {"shutter in us, and low rate",
         both(withShutter(15'980), [](Phone& its) { its.periodNs = 5 * kMs, its.firstAsked = 40; })},
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
