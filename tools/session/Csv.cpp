#include "tools/session/Csv.h"

#include <charconv>
#include <cstdlib>
#include <utility>

#include <fmt/format.h>

#include "tools/session/Errors.h"

namespace replay {
namespace {

// Takes a quoted value from the front, its quotes and the doubling of inner ones undone.
std::string takeQuoted(std::string_view& rest) {
    std::string value;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == '"' && (i + 1 == rest.size() || rest[i + 1] != '"')) {
            rest.remove_prefix(i + 1);
            return value;
        }
        if (rest[i] == '"') ++i;
        value += rest[i];
    }
    throw LineError("a quote that is not closed");
}

std::string takeValue(std::string_view& rest) {
    if (rest.starts_with('"')) return takeQuoted(rest);
    const std::string_view value = rest.substr(0, rest.find(','));
    rest.remove_prefix(value.size());
    return std::string(value);
}

}  // namespace

std::string csvValue(std::string_view text) {
    if (text.find_first_of(",\"") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char character : text)
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    return quoted + '"';
}

std::vector<std::string> csvValues(std::string_view row) {
    std::vector<std::string> values{takeValue(row)};
    while (!row.empty()) {
        if (row.front() != ',') throw LineError("expected a comma after a quoted value");
        row.remove_prefix(1);
        values.push_back(takeValue(row));
    }
    return values;
}

CsvReader::CsvReader(std::istream& input, std::string name, std::string_view header)
    : mInput(input), mName(std::move(name)) {
    if (!nextRow()) mLine = 1;
    if (mRow != header) fail(fmt::format("expected the columns {}", header));
    mColumns = csvValues(header).size();
}

bool CsvReader::nextRow() {
    while (std::getline(mInput, mRow)) {
        ++mLine;
        if (mRow.ends_with('\r')) mRow.pop_back();
        if (!mRow.empty() && mRow.front() != '#') return true;
    }
    if (mInput.bad()) throw StreamError(mName + ": cannot be read");
    mRow.clear();
    return false;
}

std::vector<std::string> CsvReader::next() {
    if (!nextRow()) return {};
    try {
        std::vector<std::string> values = csvValues(mRow);
        if (values.size() == mColumns) return values;
        fail(fmt::format("expected {} values, got {}", mColumns, values.size()));
    } catch (const LineError& error) {
        fail(error.what());
    }
}

void CsvReader::fail(const std::string& text) const {
    throw SessionError(mName, mLine, text);
}

std::int64_t CsvReader::integer(const std::string& value) const {
    std::int64_t number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end) fail("expected an integer, got \"" + value + '"');
    return number;
}

double CsvReader::decimal(const std::string& value) const {
    char* stop = nullptr;
    const double number = std::strtod(value.c_str(), &stop);
    if (value.empty() || *stop != '\0') fail("expected a number, got \"" + value + '"');
    return number;
}

}  // namespace replay
