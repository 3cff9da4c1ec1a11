// Rows of comma-separated values, and what differs between two lists of exposures.
#include "tools/report/Difference.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tools/report/ExposureRows.h"
#include "tools/session/Csv.h"
#include "tools/session/Errors.h"

namespace {

using replay::compareExposures;
using replay::ExposureRow;
using testing::ElementsAre;
using testing::HasSubstr;

ExposureRow served(const std::string& start, const std::string& x, const std::string& y = "0.5") {
    return {"0", "1", start, x, y, ""};
}
ExposureRow missed(const std::string& start, const std::string& reason) {
    return {"0", "1", start, "", "", reason};
}

TEST(Csv, ValuesReadBack) {
    const std::vector<std::string> values = {"plain", "with, comma", "with \"quotes\"", "", "\"", "last"};
    std::string row;
    for (const std::string& value : values)
        row += (row.empty() ? "" : ",") + replay::csvValue(value);
    EXPECT_EQ(replay::csvValues(row), values);
    EXPECT_THROW(replay::csvValues("a,\"b"), replay::LineError);
    EXPECT_THROW(replay::csvValues("\"a\"b"), replay::LineError);
}

TEST(Csv, BadFilesAreNamedWithTheLine) {
    const auto messageOf = [](const std::string& text) {
        std::istringstream input(text);
        try {
            replay::CsvReader reader(input, "f.csv", "a,b");
            for (auto row = reader.next(); !row.empty(); row = reader.next()) {
                reader.integer(row[0]);
                reader.decimal(row[1]);
            }
        } catch (const replay::SessionError& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(messageOf("# head\r\na,b\r\n\n1,2.5e3\r\n"), "");
    EXPECT_EQ(messageOf(""), "f.csv:1: expected the columns a,b");
    EXPECT_EQ(messageOf("a,c\n"), "f.csv:1: expected the columns a,b");
    EXPECT_EQ(messageOf("a,b\n1,2\n1\n"), "f.csv:3: expected 2 values, got 1");
    EXPECT_EQ(messageOf("a,b\n1.5,2\n"), "f.csv:2: expected an integer, got \"1.5\"");
    EXPECT_EQ(messageOf("a,b\n1,2x\n"), "f.csv:2: expected a number, got \"2x\"");
    EXPECT_EQ(messageOf("a,b\n1,\"2\n"), "f.csv:2: a quote that is not closed");
}

TEST(Exposures, ThatAreTheSameAreAlike) {
    const std::vector<ExposureRow> rows = {served("1", "2.0"), missed("2", "none"), missed("2", "none")};
    EXPECT_TRUE(compareExposures(rows, rows).isAlike());
    EXPECT_TRUE(compareExposures(rows, {rows[1], rows[0], rows[2]}).isAlike());
}

TEST(Exposures, EachDifferenceIsCountedOnce) {
    const std::vector<ExposureRow> before = {served("1", "2.0"),  served("2", "3.0"),  served("3", "3.0"),
                                             missed("4", "late"), missed("5", "late"), served("6", "1.0")};
    const std::vector<ExposureRow> after = {served("1", "2.0"), served("2", "6.0", "4.5"), missed("3", "late"),
                                            served("4", "1.0"), missed("5", "early"),      served("7", "1.0"),
                                            served("7", "1.0")};
    const replay::Difference found = compareExposures(before, after);
    EXPECT_FALSE(found.isAlike());
    EXPECT_EQ(found.positions, 1U);
    EXPECT_THAT(found.distances, ElementsAre(0.0, 5.0));
    EXPECT_EQ(found.before.served, 4U);
    EXPECT_EQ(found.before.onlyServed, 1U);
    EXPECT_EQ(found.after.onlyServed, 1U);
    EXPECT_EQ(found.reasons, 1U);
    EXPECT_EQ(found.before.unmatched, 1U);
    EXPECT_EQ(found.after.unmatched, 2U);
    EXPECT_EQ(found.examples.size(), 7U);
    EXPECT_THAT(found.examples[1], HasSubstr("start of frame 3: x 3.0 y 0.5 -> late"));
}

TEST(Exposures, OneMoreOfTheSameMomentIsADifference) {
    const std::vector<ExposureRow> once = {served("1", "2.0")};
    const std::vector<ExposureRow> twice = {served("1", "2.0"), served("1", "2.0")};
    EXPECT_EQ(compareExposures(once, twice).after.unmatched, 1U);
}

TEST(Exposures, AreReadAsTheyAreWritten) {
    std::ostringstream out;
    replay::Recording recording;
    replay::ExposureOutcome outcome;
    outcome.type = 1;
    outcome.reason = replay::detailedReason(replay::Reason::Kind::kTooFewSamples, "4, or so");
    recording.exposuresAsked({outcome});
    writeExposures(out, recording);
    std::istringstream in(out.str());
    const auto rows = replay::readExposures(in, "rows");
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].reason, outcome.reason->text);
    EXPECT_FALSE(rows[0].isServed());
}

}  // namespace
