#include "tools/play/Player.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// A session that leaves its monitor running.
std::string openEnded() {
    std::string text = R"({"call":"RegisterAndStartSensorMonitor","sensor":0,"type":5})"
                       "\n"
                       R"({"samples":5,"data":[)";
    for (int ms = 1; ms <= 120; ++ms)
        text += (ms > 1 ? ",[" : "[") + std::to_string(ms) + "000000,0,0,1,2]";
    return text + "]}\n" + R"({"call":"UpdateSensorData","sensor":0,"frame":1,"timestamp":1})" + "\n" +
           R"({"call":"QuerySensorData","sensor":0,"frame":0,"timestamp":60000000})" + "\n";
}

std::string resultsOf(bool endMonitors) {
    std::istringstream session(openEnded());
    std::ostringstream results;
    replay::PlayOptions options;
    options.results = &results;
    options.endMonitors = endMonitors;
    replay::play(session, options);
    return results.str();
}

TEST(Player, ASessionWhoseMonitorsAreEndedDoesTheSameAgain) {
    const std::string first = resultsOf(true);
    EXPECT_NE(first.find("[60000000,"), std::string::npos);
    EXPECT_EQ(resultsOf(true), first);
}

// The state that ending the monitors is for.
TEST(Player, WhatASessionLeavesRunningStaysInTheProcess) {
    resultsOf(false);
    std::istringstream session(R"({"call":"IsEnabled","sensor":0})");
    std::ostringstream results;
    replay::PlayOptions options;
    options.results = &results;
    replay::play(session, options);
    EXPECT_NE(results.str().find("\"result\":true"), std::string::npos);
}

}  // namespace
