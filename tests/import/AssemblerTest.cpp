// The assemblers: messages of threads as calls, whole ones and with messages lost.
#include <gtest/gtest.h>

#include "tests/import/Assembly.h"

namespace {

using namespace assembly;

struct Case {
    const char* name;
    Messages messages;
    std::string calls;
};

void check(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(read(c.messages), c.calls);
    }
}

// Every message on a thread without a number.
Messages mixed(Messages messages) {
    for (Message& message : messages)
        message.tid = 0;
    return messages;
}

// Two lists, a message of each in turn.
Messages interleaved(const Messages& a, const Messages& b) {
    Messages all;
    for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
        if (i < a.size()) all.push_back(a[i]);
        if (i < b.size()) all.push_back(b[i]);
    }
    return all;
}

TEST(Assemblers, MakeHandOvers) {
    const Messages whole = handOver(40, 3, 1000, 3);
    const Messages next = handOver(41, 4, 4000, 2);
    const Messages empty{{"[updateSensorData] no sensor data for type 5"}};
    const std::string split = "[pushValue] split data frameNumber: 41 lastData:3 data:2 splitTime:3500000";
    check({
        {"whole", joined({whole, next}), "3:F40 2:F41"},
        {"a sample lost", without(whole, "index:1,"), "2:F40-1"},
        {"its last sample lost", without(whole, "index:2,"), "2:F40"},
        {"all samples lost", without(whole, "index:"), "0:F40"},
        {"without the message that files it", without(whole, "dataSize"), "3:F40"},
        {"without its last message", joined({without(whole, "update sensor"), next}), "3:F40! 2:F41"},
        {"without a number", joined({without(whole, "F:("), next}), "3:F?! 2:F41"},
        {"from one into the next", joined({{whole[0], whole[1]}, {next[2], next[3]}}), "2:F41"},
        {"split", {next[0], next[1], {split}, next[2], next[3]}, "2:F41/"},
        {"split, and the next one's", {next[0], {split}, {filed(42, 1, 5, 5)}}, "1:F41/! 0:F42!"},
        {"empty", joined({empty, whole}), "E5 3:F40"},
        {"empty twice", mixed(joined({empty, empty, whole})), "E5 E5 3:F40"},
        {"printed twice", mixed(interleaved(joined({whole, empty}), joined({whole, empty}))),
         "3:F40 E5 \"a hand-over without samples, twice like other lines of this log; taken for one\""},
        {"of two threads",
         {{whole[0].text, 1}, {next[0].text, 2}, {whole[4].text, 1}, {next[3].text, 2}},
         "1:F40 1:F41"},
        {"an index beyond sense",
         {{sample(1U << 30, 5)}, whole[4]},
         "\"a sample with an index out of order; left out\" 0:F40"},
    });
}

TEST(Assemblers, MakeFrames) {
    const Messages whole = frame(3, 1000000, 200);
    const Messages next = frame(3, 1033000, 233);
    const auto result = [](const Messages& m) { return Messages(m.end() - 2, m.end()); };
    const auto begin = [](const Messages& m) { return Messages(m.begin(), m.begin() + 50); };
    // Queries are answered under a lock and do not mix.
    const auto query = [](const Messages& m) { return Messages(m.begin(), m.begin() + 6); };
    const auto rest = [](const Messages& m) { return Messages(m.begin() + 6, m.end()); };
    const Messages other = frame(4, 1000300, 200, "7.125000");
    check({
        {"whole", whole, "T[s3t1p*]"},
        {"without its mode", without(whole, "multiexp"), "T[s3t1p*]"},
        {"without its timing", without(whole, "[ne:"), "M[s3t1p*]"},
        {"a calculation alone", Messages(whole.begin() + 2, whole.end() - 1), "[s3t1p*]"},
        {"without its calculation", without(whole, "oisCount"),
         "T [query] \"messages of a calculation whose beginning is not in the capture\" \"a position of sensor 3 "
         "without its calculation; left out\" \"a position was written; which calculation's is not in the capture\""},
        {"without its result", joined({without(whole, "out_frame"), next}),
         "T[s3t1?] \"a position was written; which calculation's is not in the capture\" T[s3t1p*]"},
        {"a step lost", without(whole, "startIndex, index = 3,"), "T[s3t1p] \"1 message of a calculation missing\""},
        {"a listed sample lost", without(whole, "data index = 70,"), "T[s3t1p]"},
        {"from one into the next", joined({begin(whole), result(next)}), "T[s3t1p]"},
        {"written",
         {{"[fillLscOISCompInfo] is_multiexp_mode:0"}, {"[fillLscOISCompInfo] oisValue has been written"}},
         "W"},
        {"threads of their own",
         interleaved(whole,
                     [&] {
                         Messages copy = other;
                         for (Message& m : copy)
                             m.tid = 8;
                         return copy;
                     }()),
         "T[s3t1p*] T[s4t1p*]"},
        {"two cameras mixed", mixed(joined({query(whole), query(other), interleaved(rest(whole), rest(other))})),
         "T[s3t1p] T[s4t1p]"},
    });
}

TEST(Assemblers, TellAFrameWithoutAMatch) {
    Messages messages = frame(0, 1000000, 50);
    messages.erase(messages.begin() + 6, messages.end());
    messages.push_back(
        {"[CalcOISValue] sensorId = 0, type = 1, oisCount = 0, sof_timestamp = 1000000, exposure_time = "
         "1000, shutter_time = 4000, timeDiff = -709"});
    EXPECT_EQ(read(messages), "T[s0t1n*] [query]");  // the query had an answer
    messages[4].text = "[getSensorData] get sensor data F:(0) TS:(1001000000) data size:0";
    EXPECT_EQ(read(messages), "T[s0t1n*]");
}

TEST(Assemblers, MakeMonitors) {
    const Message registered{"[RegisterSensorMonitor] Register Sensor Monitor sensorId:2 sensorType:5"};
    const Message delivers{"[enableSensor] enable sensorType 5 success"};
    const Message started{"[StartSensorMonitor] Enable Sensor Monitor sensorId:2"};
    const Message ended{"[disableSensor] disable sensorType 5"};
    const Message stopped{"[UnRegisterSensorMonitor] Stop sensorId:2, mSensorMonitors.size:0"};
    const Message failed{"[RegisterAndStartSensorMonitor] Enable Sensor Fail !!!, UnRegisterSensorMonitor"};
    check({
        {"a life", {registered, delivers, started, ended, stopped}, "R2- U2"},
        {"a start that fails", {registered, ended, stopped, failed}, "R2failed"},
        {"... without a provider", {registered, stopped, failed}, "R2failed-"},
        {"without its registration",
         {delivers, started},
         "\"sensor 2: its monitor started; its registration is not in the capture\" R2"},
        {"of its start one message alone", {delivers}, "\"a monitor started; its registration is not in the capture\""},
        {"without its start",
         {registered, delivers},
         "R2- \"sensor 2: whether its monitor started is not in the capture; assumed: yes\""},
        {"a message of the start lost", {registered, started}, "R2- \"a message of a monitor's start is missing\""},
    });
}

TEST(Assemblers, MakeOtpReads) {
    const Message layout{
        "[ReadOTPInfo] sensorId:1 multiGolden[offset:0, size:8, valid:0, gradient:1, 2] oisCalibration[offset:10, "
        "size:4, valid:8, indexNum:1, tableNumber:2]"};
    const Message golden{"[ReadOTPInfo] sensorId:1, multiGolden is not valid(0)!!! (ReadOTPInfo){#1:a.cpp}"};
    const Message calibration{"[ReadOTPInfo] sensorId:1, oisCalibration is valid(1)"};
    check({
        {"whole", {layout, golden, calibration}, "O1LGC"},
        {"a message lost", {layout, calibration}, "O1LC"},
        {"two of one thread",
         {layout, {layout.text + " "}, layout},
         "O1L \"a message of the library that is cut or "
         "changed; left out\" O1L"},
    });
}

}  // namespace
