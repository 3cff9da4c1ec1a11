#include "tools/session/LineParser.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/session/Errors.h"
#include "tools/session/JsonText.h"

namespace {

constexpr std::size_t kAll = 1000;

std::string nested(int depth, const std::string& inner) {
    const auto brackets = static_cast<std::size_t>(depth);
    return std::string(brackets, '[') + inner + std::string(brackets, ']');
}

struct Line {
    std::string text;
    std::string value;  // as it is shown
};

// Where two parsers could disagree, or a number lose something.
TEST(LineParser, KeepsEveryValue) {
    replay::LineParser parser;
    for (const Line& line :
         {Line{"[-0,-0.0,0]", "[0,-0.0,0]"},
          {"[9223372036854775808,-9223372036854775808]", "[9223372036854775808,-9223372036854775808]"},
          {"[18446744073709551615,18446744073709551616]", "[18446744073709551615,1.8446744073709552e+19]"},
          {"[-9223372036854775809,1]", "[-9.223372036854776e+18,1]"},
          {"[4.9e-324,1e-400,1E3,0.1]", "[5e-324,0.0,1000.0,0.1]"},
          {R"({"b":1,"a":{"b":null},"":[true,false]})", R"({"":[true,false],"a":{"b":null},"b":1})"},
          {R"("a\ud83d\ude00\n\"\\\/")", "\"a\xF0\x9F\x98\x80\\n\\\"\\\\/\""},
          {" \t[ ]\r", "[]"},
          {nested(17, ""), nested(17, "")}}) {
        EXPECT_EQ(replay::shown(parser.parse(line.text), kAll), line.value) << line.text;
    }
}

TEST(LineParser, RefusesWhatOneParserWouldTake) {
    replay::LineParser parser;
    for (const std::string& text :
         {std::string(R"({"a":1,"\u0061":1})"), std::string(R"([{"a":{"b":1,"b":1}}])"), std::string(R"("\udc00")"),
          std::string(R"("\ud800\ud800")"), std::string("[1]\0", 4), std::string("\xEF\xBB\xBF[]"),
          std::string("1e400"), std::string("\"\xED\xA0\x80\""), std::string("[1 2]"), std::string("{} {}"),
          nested(17, "1"), nested(1000, "")}) {
        EXPECT_THROW(parser.parse(text), replay::LineError) << text.substr(0, kAll);
    }
}

// The first line's values are many and long, so that they lie in memory that a short line does not reach.
TEST(LineParser, ALineAfterALongOneIsReadAnew) {
    replay::LineParser parser;
    std::string list = "[\"" + std::string(100'000, 'x') + '"';
    for (int i = 0; i < 20'000; ++i)
        list += ",[" + std::to_string(i) + "]";
    EXPECT_EQ(replay::shown(parser.parse(list + "]"), 1'000'000), list + "]");
    EXPECT_EQ(replay::shown(parser.parse(R"({"a":"b"})"), kAll), R"({"a":"b"})");
}

}  // namespace
