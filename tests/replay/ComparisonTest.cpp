// What a device made of an exposure beside what the workstation made of it.
#include "tools/report/Comparison.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <map>
#include <sstream>

#include "tools/report/Recording.h"
#include "tools/session/Errors.h"
#include "tools/session/Expectation.h"

namespace {

using replay::ExposureOutcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class Compared : public testing::Test {
protected:
    // The workstation's position for an exposure of sensor 0, type 1; none without one.
    void here(std::optional<replay::Position> position, bool earlier = false) {
        ExposureOutcome outcome;
        outcome.type = 1;
        outcome.position = position;
        if (!position || earlier) outcome.reason = replay::plainReason(replay::Reason::Kind::kAlreadyWritten);
        mComparison.exposuresAsked({outcome});
    }
    // What is printed of a device's result.
    std::string device(const std::string& line) {
        mOut.str("");
        mComparison.expected(replay::readExpectation("#expect " + line));
        return mOut.str();
    }
    // The counts that are not 0, without their heading.
    std::map<std::string, std::uint64_t> counts() const {
        std::map<std::string, std::uint64_t> found;
        for (const auto& [label, count] : mComparison.counts()) {
            if (count != 0 && label.starts_with("  ")) found.emplace(label.substr(2), count);
        }
        return found;
    }

    std::ostringstream mOut;
    replay::Comparison mComparison{mOut};
};

TEST_F(Compared, OneInTheLastDecimalIsRounding) {
    here(replay::Position{1.25, -0.5});
    EXPECT_THAT(device(R"({"sensor":0,"type":1,"x":"1.250000","y":"-0.500000"})"), IsEmpty());
    EXPECT_THAT(device(R"({"sensor":0,"type":1,"x":"1.250001","y":"-0.500000"})"), IsEmpty());
    EXPECT_THAT(device(R"({"frame":7,"sensor":0,"type":1,"x":"1.250002","y":"-0.500000"})"),
                HasSubstr("frame 7: the device gave x 1.250002 y -0.500000, here x 1.250000 y -0.500000"));
    EXPECT_THAT(counts(),
                UnorderedElementsAre(Pair("equal to six decimals, or none on both", 1),
                                     Pair("equal except in the last decimal", 1), Pair("different positions", 1)));
}

TEST_F(Compared, APositionOnOneSideOnlyIsTold) {
    const std::string none = R"({"sensor":0,"type":1,"x":null,"y":null})";
    const std::string some = R"({"sensor":0,"type":1,"x":"1.000000","y":"2.000000"})";
    here(std::nullopt);
    EXPECT_THAT(device(none), IsEmpty());
    EXPECT_THAT(device(some), HasSubstr("the device gave x 1.000000 y 2.000000, here no position"));
    here(replay::Position{1, 2});
    EXPECT_THAT(device(none), HasSubstr("the device gave no position, here x 1.000000"));
    EXPECT_THAT(device(R"({"sensor":1,"type":1,"x":"1.000000","y":"2.000000"})"), HasSubstr("here no position"));
    here(replay::Position{1, 2}, true);  // written by an earlier call
    EXPECT_THAT(device(none), IsEmpty());
    EXPECT_EQ(mComparison.counts().front().second, 5U);
}

TEST_F(Compared, AToleranceCountsForEveryView) {
    replay::Comparison comparison(mOut, 0.001);
    replay::Recording recording(0.001);
    for (const char* const x : {"1.000900", "1.001100"}) {
        ExposureOutcome outcome;
        outcome.type = 1;
        outcome.position = replay::Position{1, 2};
        const auto expectation =
            replay::readExpectation(fmt::format(R"(#expect {{"sensor":0,"type":1,"x":"{}","y":"2.000000"}})", x));
        for (replay::Observer* const observer :
             {static_cast<replay::Observer*>(&comparison), static_cast<replay::Observer*>(&recording)}) {
            observer->exposuresAsked({outcome});
            observer->expected(expectation);
        }
    }
    EXPECT_THAT(comparison.counts(),
                IsSupersetOf({Pair("  equal to within 0.001", 1), Pair("  different positions", 1)}));
    EXPECT_THAT(mOut.str(), AllOf(HasSubstr("1.001100"), Not(HasSubstr("1.000900"))));
    const auto& exposures = recording.sensors().at(0).exposures;
    EXPECT_FALSE(exposures[0].differs());
    EXPECT_TRUE(exposures[1].differs());
}

TEST_F(Compared, NothingComparedGivesNoCounts) {
    EXPECT_THAT(mComparison.counts(), IsEmpty());
}

TEST_F(Compared, WhatIsNoExpectationIsRefused) {
    for (const char* line :
         {"{}", "[]", "{", R"({"sensor":0,"type":1,"x":"1.0"})", R"({"sensor":0,"type":1,"x":"1.0","y":2})",
          R"({"sensor":0,"type":1,"x":"a","y":"1"})", R"({"sensor":0,"type":1,"x":null,"y":null,"z":1})"}) {
        EXPECT_THROW(replay::readExpectation(std::string("#expect ") + line), replay::LineError) << line;
    }
}

}  // namespace
