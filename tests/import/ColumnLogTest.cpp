// Recorders' column logs: what counts as a row, exact times, errors with their place.
#include <gmock/gmock.h>

#include <sstream>
#include <stdexcept>

#include "tools/replay/Errors.h"
#include "tools/replay/import/ColumnLog.h"
#include "tools/replay/import/ColumnSession.h"

namespace {

using namespace replay::import;
using testing::HasSubstr;
using testing::ThrowsMessage;

ColumnLog logOf(std::string_view columns, TimeUnit unit = TimeUnit::kNs) {
    return ColumnLog("f.txt", "--c", columns, unit, {"time"}, {"x", "frame"});
}

TEST(ColumnLog, TakesEverySeparatorAndSkipsHeads) {
    ColumnLog log = logOf("frame,-,x,time");
    for (const char* line : {"# comment", "", " \t", "frame;zoom;x;time"})
        EXPECT_FALSE(log.take(line)) << line;
    for (const char* line : {"7 1.0 -2.5 99", "7,1.0,-2.5,99\r", "  7;\t1.0 ; -2.5,99 more"}) {
        ASSERT_TRUE(log.take(line)) << line;
        EXPECT_EQ(log.whole("frame"), 7u);
        EXPECT_EQ(log.number("x"), -2.5f);
        EXPECT_EQ(log.time("time"), 99u);
    }
}

TEST(ColumnLog, KeepsEveryNanosecond) {
    const std::tuple<TimeUnit, const char*, std::uint64_t> cases[] = {
        {TimeUnit::kNs, "1639493638769", 1639493638769u},
        {TimeUnit::kUs, "1639493638.769", 1639493638769u},
        {TimeUnit::kMs, "1639493.6387699", 1639493638769u},
        {TimeUnit::kS, "1639.493638769", 1639493638769u},
        {TimeUnit::kS, "9223372036.854775807", 9223372036854775807u}};
    for (const auto& [unit, text, ns] : cases) {
        ColumnLog log = logOf("time", unit);
        ASSERT_TRUE(log.take(text));
        EXPECT_EQ(log.time("time"), ns) << text;
    }
}

TEST(ColumnLog, SaysWhereAndWhatToDo) {
    ColumnLog log = logOf("x,time", TimeUnit::kS);
    ASSERT_TRUE(log.take("1 2"));
    EXPECT_THAT([&] { log.take("1"); },
                ThrowsMessage<replay::SessionError>(HasSubstr("f.txt:2: 1 columns, expected 2")));
    for (const char* bad : {"1 -2", "1 2e9", "1 nine", "1 9223372036.854775808", "1 99999999999999999999", "1 0x10"}) {
        ASSERT_TRUE(log.take(bad));
        EXPECT_THAT([&] { log.time("time"); }, ThrowsMessage<replay::SessionError>(HasSubstr("expected a time in s")))
            << bad;
    }
    for (const char* bad : {"nan 1", "1e39 1", "- 1", "1.0.0 1"}) {
        ASSERT_TRUE(log.take(bad));
        EXPECT_THAT([&] { log.number("x"); }, ThrowsMessage<replay::SessionError>(HasSubstr("(--c)"))) << bad;
    }
}

TEST(ColumnLog, RefusesColumnsThatDoNotDo) {
    EXPECT_THAT([] { logOf("time,y"); }, ThrowsMessage<std::invalid_argument>(HasSubstr("no column is called \"y\"")));
    EXPECT_THAT([] { logOf("time,time"); }, ThrowsMessage<std::invalid_argument>(HasSubstr("stands twice")));
    EXPECT_THAT([] { logOf("x,-"); }, ThrowsMessage<std::invalid_argument>(HasSubstr("\"time\" is missing")));
}

TEST(ColumnSession, HandsOverByFrameOrByTime) {
    ColumnOptions options;
    options.frameColumns = "time,exposure";
    options.readoutNs = 10;
    for (const char* columns : {"frame,x,y,time", "-,x,y,time"}) {
        options.oisColumns = columns;
        std::istringstream ois("1 0.5 1 105\n1 1 1 110\n2 2 1 111\n9 3 1 999\n");
        std::istringstream frames("100 5\n200 5\n");
        const ColumnSession session = importColumns(ois, frames, options);
        EXPECT_THAT(session.text, HasSubstr(R"({"samples":5,"data":[[105,0.5,1.0,0.5,1.0],[110,1.0,1.0,1.0,1.0]]})"));
        EXPECT_THAT(session.text, HasSubstr(R"("data":[[111,2.0,1.0,2.0,1.0]]})"));
        EXPECT_EQ(session.unused, 1u);
    }
}

}  // namespace
