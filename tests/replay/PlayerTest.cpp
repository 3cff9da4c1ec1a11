#include "tools/play/Player.h"

#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "tools/session/Errors.h"

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

// The message about the session; empty when it was played.
std::string refusalOf(std::istream& input) {
    replay::PlayOptions options;
    options.name = "s";
    try {
        replay::play(input, options);
    } catch (const replay::SessionError& error) {
        return error.what();
    }
    return "";
}

// A line of comment that has no end.
class EndlessLine : public std::streambuf {
protected:
    int_type underflow() override {
        setg(mText.data(), mText.data(), mText.data() + mText.size());
        return mText.front();
    }

private:
    std::string mText = std::string(65536, '#');
};

TEST(Player, ALineWithoutAnEndIsRefused) {
    EndlessLine line;
    std::istream input(&line);
    EXPECT_EQ(refusalOf(input), "s:1: longer than 134217728 bytes");
}

// A line for each name: 64 blocks of a MiB, which with their entries take a little more than a quarter of the limit.
std::string blocks(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += R"({"metadata":")" + name + R"(","entries":[{"tag":0,"memory":{"size":1048576}})";
        for (int tag = 1; tag < 64; ++tag)
            text += ",{\"tag\":" + std::to_string(tag) + R"(,"memory":{"size":1048576}})";
        text += "]}\n";
    }
    return text;
}

TEST(Player, MetadataIsRefusedBeyondItsLimitAndNotBefore) {
    std::istringstream fits(blocks({"a", "b", "c", "a", "b", "c"}));
    EXPECT_EQ(refusalOf(fits), "");
    std::istringstream grows(blocks({"a", "b", "c", "d"}));
    EXPECT_EQ(refusalOf(grows), "s:4: entries[63].memory: the session's metadata would take more than 268435456 bytes");
}

}  // namespace
