// Rows of comma-separated values, quoted where they need it. A value holds no line break.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace replay {

// The value as a row holds it.
std::string csvValue(std::string_view text);

// The values of a row. Throws LineError for a quote that is not closed or stands within a plain value.
std::vector<std::string> csvValues(std::string_view row);

// Reads a file by its rows. Empty rows, and rows that begin with "#", are skipped.
class CsvReader {
public:
    // The first row must be `header`. `name` is the input's in messages. Throws SessionError.
    CsvReader(std::istream& input, std::string name, std::string_view header);

    // The values of the next row, as many as the header names; empty at the end. Throws SessionError for another
    // number of values, StreamError when the input cannot be read.
    std::vector<std::string> next();
    // Throws a SessionError that names the newest row.
    [[noreturn]] void fail(const std::string& text) const;
    // The value as a number. Each throws SessionError for anything else.
    std::int64_t integer(const std::string& value) const;
    double decimal(const std::string& value) const;

private:
    bool nextRow();

    std::istream& mInput;
    const std::string mName;
    std::string mRow;
    std::size_t mLine = 0;
    std::size_t mColumns = 0;
};

}  // namespace replay
