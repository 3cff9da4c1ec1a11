// Bytes as lines, numbers as values, records that a capture holds twice.
#include <gmock/gmock.h>

#include "tools/import/LineSplitter.h"
#include "tools/import/RepeatFilter.h"
#include "tools/import/Scan.h"

namespace {

using namespace replay::import;
using testing::ElementsAre;

// The lines of a text that comes in pieces of `step` bytes.
std::vector<std::string> linesOf(const std::string& text, std::size_t step) {
    std::vector<std::string> lines;
    LineSplitter splitter([&](std::string_view line) { lines.emplace_back(line); });
    for (std::size_t i = 0; i < text.size(); i += step)
        splitter.add(std::string_view(text).substr(i, step));
    splitter.finish();
    return lines;
}

std::string utf16(std::u16string_view text, bool little) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += little ? low : high;
        bytes += little ? high : low;
    }
    return bytes;
}

TEST(Lines, AreTheSameInEveryEncodingAndPiece) {
    const std::u16string wide = u"\uFEFFa\u00E9\r\n\r\n\u20AC\U0001F600\r\r\nend";
    for (std::size_t step = 1; step < 8; ++step) {
        EXPECT_THAT(linesOf("a\r\n\nb\r\r\nc", step), ElementsAre("a", "", "b", "c"));
        EXPECT_THAT(linesOf("\xEF\xBB\xBFi\n", step), ElementsAre("i"));
        EXPECT_THAT(linesOf("x", step), ElementsAre("x"));
        for (const bool little : {true, false})
            EXPECT_THAT(linesOf(utf16(wide, little), step), ElementsAre("aé", "", "€😀", "end"));
    }
    EXPECT_THAT(linesOf("", 1), ElementsAre());
}

TEST(Lines, MayChangeTheirEncoding) {
    const std::string narrow = "11-22 10:00:00.000  99  7\n";
    const std::u16string wide = u"11-22 10:00\r\n\u4E2D\u6587\u4E2D\r\n";
    const auto first = testing::ElementsAre("11-22 10:00", "中文中", narrow.substr(0, 25), narrow.substr(0, 25));
    for (std::size_t step = 1; step < 8; ++step) {
        for (const bool little : {true, false}) {
            const std::string mark = utf16(u"\uFEFF", little);
            EXPECT_THAT(linesOf(mark + utf16(wide, little) + narrow + narrow, step), first);
            EXPECT_THAT(linesOf(mark + utf16(wide, little) + "\xEF\xBB\xBF" + narrow + narrow, step), first);
            for (const std::string& between : {std::string(), mark})
                EXPECT_EQ(linesOf(narrow + between + utf16(u"end\r\n", little), step)[1], "end");
        }
        EXPECT_EQ(linesOf(narrow + "\xEF\xBB\xBF" + narrow, step)[1], narrow.substr(0, 25));
    }
}

TEST(Lines, BeyondTheLimitAreCut) {
    const std::string text(3 * LineSplitter::kMaxLine, 'x');
    EXPECT_EQ(linesOf(text + "\nnext", 1000)[0].size(), LineSplitter::kMaxLine);
    EXPECT_EQ(linesOf(text + "\nnext", text.size())[1], "next");
}

TEST(Numbers, HaveSixDecimalsAndFitAFloat) {
    const auto value = [](std::string text) {
        std::string_view rest = text;
        Decimal decimal;
        return takeValue(rest, decimal) && rest.empty() ? decimal.value : -1;
    };
    EXPECT_EQ(value("12.345678"), 12.345678);
    EXPECT_EQ(value("-0.000001"), -0.000001);
    EXPECT_EQ(value("-inf"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(value("-nan")));
    EXPECT_EQ(value("340282346638528859811704183484516925440.000000"),
              static_cast<double>(std::numeric_limits<float>::max()));
    for (const std::string text : {"1.23456", "1.2345678", "1", ".000000", "1,000000", "+1.000000", "1e5", "in"})
        EXPECT_EQ(value(text), -1) << text;
    EXPECT_EQ(value(std::string(400, '9') + ".000000"), -1);
}

TEST(Repeats, AreFoundByTheClockThatRunsBack) {
    using Verdict = RepeatFilter::Verdict;
    RepeatFilter filter;
    const auto check = [&](std::string_view time, std::string_view text) {
        LogLine line;
        line.time = time;
        line.text = text;
        return filter.check(line);
    };
    for (const char* time : {"10:00:01.000", "10:00:02.000", "10:00:03.000"})
        EXPECT_EQ(check(time, time), Verdict::kNew);
    EXPECT_EQ(check("10:00:02.000", "10:00:02.000"), Verdict::kRepeated);
    EXPECT_EQ(check("10:00:02.500", "lost the first time"), Verdict::kLate);
    EXPECT_EQ(check("10:00:03.000", "10:00:03.000"), Verdict::kRepeated);
    EXPECT_EQ(check("10:00:04.000", "next"), Verdict::kNew);
    EXPECT_EQ(check("10:00:01.500", "of another log"), Verdict::kBack);
    EXPECT_EQ(check("", "a form without a clock"), Verdict::kNew);
}

}  // namespace
