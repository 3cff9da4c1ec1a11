// Lines of logcat in every form that it prints.
#include <gmock/gmock.h>

#include <string>

#include "tools/import/LogLine.h"

namespace {

using replay::import::LogLine;
using replay::import::parseLogLine;

struct Form {
    const char* line;
    const char* time;
    std::optional<std::uint32_t> pid;
    std::optional<std::uint32_t> tid;
    char priority = 'D';
    const char* tag = "Tag";
    const char* text = "[f] x: 1 (2): 3";
};

constexpr Form kForms[] = {
    {"11-22 10:11:12.345  1234  5678 D Tag     : [f] x: 1 (2): 3", "11-22 10:11:12.345", 1234, 5678},
    {"2026-11-22 10:11:12.345  1234     7 D Tag: [f] x: 1 (2): 3", "2026-11-22 10:11:12.345", 1234, 7},
    {"11-22 10:11:12.345 +0100  1234 5678 D Tag: [f] x: 1 (2): 3", "11-22 10:11:12.345", 1234, 5678},
    {"11-22 10:11:12.345678901 -0330 10123  1 2 D Tag: [f] x: 1 (2): 3", "11-22 10:11:12.345678901", 1, 2},
    {"11-22 10:11:12.345678 media  1234  5678 D Tag: [f] x: 1 (2): 3", "11-22 10:11:12.345678", 1234, 5678},
    {"  1700000000.123  1234  5678 D Tag: [f] x: 1 (2): 3", "1700000000.123", 1234, 5678},
    {"11-22 10:11:12.345  1234  5678 E Tag a b : ", "11-22 10:11:12.345", 1234, 5678, 'E', "Tag a b", ""},
    {"11-22 10:11:12.345 W/Tag     ( 1234): [f] x: 1 (2): 3", "11-22 10:11:12.345", 1234, {}, 'W'},
    {"11-22 10:11:12.345 +0100 D/Tag(10123: 1234): [f] x: 1 (2): 3", "11-22 10:11:12.345", 1234, {}},
    {"D/Tag     ( 1234): [f] x: 1 (2): 3", "", 1234, {}},
    {"D/Tag (a)(media: 1234): [f] x: 1 (2): 3", "", 1234, {}, 'D', "Tag (a)"},
    {"D( 1234) [f] x: 1 (2): 3  (Tag)", "", 1234, {}},
    {"E(10123: 1234) [f] x: 1 (2): 3  (Tag a)", "", 1234, {}, 'E', "Tag a"},
    {"D/Tag     : [f] x: 1 (2): 3", "", {}, {}},
};

TEST(LogLine, OfEveryFormIsTakenApart) {
    for (const Form& form : kForms) {
        SCOPED_TRACE(form.line);
        const auto line = parseLogLine(form.line);
        ASSERT_TRUE(line);
        EXPECT_EQ(line->time, form.time);
        EXPECT_EQ(line->pid, form.pid);
        EXPECT_EQ(line->tid, form.tid);
        EXPECT_EQ(line->priority, form.priority);
        EXPECT_EQ(line->tag, form.tag);
        EXPECT_EQ(line->text, form.text);
    }
}

TEST(LogLine, OfTheFormLongTakesTwoLines) {
    replay::import::LogParser parser;
    EXPECT_FALSE(parser.parse("\x1b[38;5;75m[ 11-22 10:11:12.345 +0100 media: 1234: 5678 D/Tag      ]"));
    const auto line = parser.parse("[f] x: 1 (2): 3\x1b[0m");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->time, "11-22 10:11:12.345");
    EXPECT_EQ(line->pid, 1234u);
    EXPECT_EQ(line->tid, 5678u);
    EXPECT_EQ(line->tag, "Tag");
    EXPECT_EQ(line->text, "[f] x: 1 (2): 3");
    EXPECT_FALSE(parser.parse(""));
    // A head whose text is lost.
    EXPECT_FALSE(parser.parse("[ 11-22 10:11:12.346 1234:5678 D/Tag ]"));
    const auto cut = parser.parse("[ 11-22 10:11:12.347 1234:5678 D/Tag ]");
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->time, "11-22 10:11:12.346");
    EXPECT_EQ(cut->text, "");
}

TEST(LogLine, OfOtherFormsIsNone) {
    for (const char* line :
         {"", " ", "--------- beginning of main", "11-22 10:11:12.345", "at com.android.Camera",
          "11-22 10:11:12 1234 5678 D Tag: x", "11-22 10:11:12.345 1234 5678 Tag: x",
          "11-22 10:11:12.345 1234 5678 D Tag x", "1234 5678 D Tag: x", "D/Tag(1234) x", "D/Tag", "D(12) no tag",
          "D( 12:  13) x", "[ 11-22 10:11:12.345  1: 2 D/Tag ]", "11-22 10:11:12.345 99999999999 1 D Tag: x",
          "11-22 10:11:12.345 1 99999999999 D Tag: x", "\xff\xfe/(1):"}) {
        EXPECT_FALSE(parseLogLine(line)) << line;
    }
    EXPECT_FALSE(parseLogLine(std::string("D/\0(", 4)));
}

TEST(LogLine, MayBeCutAnywhere) {
    const std::string whole = "2026-11-22 10:11:12.345 +0100 media  1234  5678 D Tag     : text";
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto line = parseLogLine(whole.substr(0, size));
        EXPECT_EQ(line.has_value(), size > whole.find(" : ") + 1) << size;
    }
}

}  // namespace
