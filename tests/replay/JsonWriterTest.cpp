// Numbers and texts of results are compared byte for byte: their form is exact.
#include "tools/session/JsonWriter.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

namespace {

template <typename T>
std::string text(T value) {
    return replay::JsonWriter().value(value).text();
}

TEST(JsonWriter, NumbersAreFixedFromATenThousandthToBelow1e16) {
    struct Case {
        double value;
        const char* text;
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr Case kCases[] = {
        {0, "0.0"},
        {-0.0, "-0.0"},
        {2, "2.0"},
        {-1.25, "-1.25"},
        {0.1, "0.1"},
        {0.0001, "0.0001"},
        {0.00012345, "0.00012345"},
        {0.00009999, "9.999e-05"},
        {1.5e-7, "1.5e-07"},
        {123456.75, "123456.75"},
        {1e15, "1000000000000000.0"},
        {9999999999999998, "9999999999999998.0"},
        {1e16, "1e+16"},
        {-1.5e300, "-1.5e+300"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {kInfinity, "\"inf\""},
        {-kInfinity, "\"-inf\""},
        {std::numeric_limits<double>::quiet_NaN(), "\"nan\""},
    };
    for (const Case& entry : kCases)
        EXPECT_EQ(text(entry.value), entry.text);
    EXPECT_EQ(text(0.1F), "0.1");  // by a float's digits
    EXPECT_EQ(text(16777216.0F), "16777216.0");
    EXPECT_EQ(text(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(text(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(JsonWriter, EveryFiniteNumberReadsBackToItself) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 20'000; ++i) {
        const auto wide = std::bit_cast<double>(random());
        if (std::isfinite(wide)) {
            EXPECT_EQ(std::strtod(text(wide).c_str(), nullptr), wide);
        }
        const auto narrow = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(narrow)) {
            EXPECT_EQ(std::strtof(text(narrow).c_str(), nullptr), narrow);
        }
    }
}

TEST(JsonWriter, StringsHoldAnyBytes) {
    EXPECT_EQ(text(std::string_view("a\"\\\n\0\x1f\xc3\xa9\xff", 9)),
              "\"a\\\"\\\\\\n\\u0000\\u001f\xc3\xa9\xef\xbf\xbd\"");
    const std::uint8_t bytes[] = {0x00, 0x7f, 0xa5, 0xff};
    EXPECT_EQ(replay::JsonWriter().bytes(bytes).text(), "\"007fa5ff\"");
}

TEST(JsonWriter, CommasStandBetweenNeighboursAlone) {
    replay::JsonWriter json;
    json.beginObject().member("empty", std::vector<int>()).key("object").beginObject().endObject();
    json.member("list", std::vector<std::string>{"{", ":"}).member("flag", true).key("rows").beginList();
    json.value(std::vector<int>{1, 2}).value(nullptr).verbatim("1.50").endList().endObject();
    EXPECT_EQ(json.take(), R"({"empty":[],"object":{},"list":["{",":"],"flag":true,"rows":[[1,2],null,1.50]})");
    EXPECT_EQ(json.value(1).text(), "1");  // begins anew
}

}  // namespace
