// Lines of numbers in columns, as recorders write them: separated by spaces, tabs, commas or semicolons. Lines that are
// empty or begin with '#', and a first line of words, count as no row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace replay::import {

enum class TimeUnit : std::uint64_t { kNs = 1, kUs = 1000, kMs = 1000000, kS = 1000000000 };

class ColumnLog {
public:
    // `columns` names the columns from the left, separated by commas; "-" is one without a use, and columns beyond the
    // last are ignored. `file` is the log's name in messages, `option` the one that names its columns.
    // Throws std::invalid_argument, naming the option, for a name that is neither required nor optional, one that
    // stands twice and a required one that is missing.
    ColumnLog(std::string file, std::string option, std::string_view columns, TimeUnit unit,
              std::initializer_list<std::string_view> required, std::initializer_list<std::string_view> optional);

    // Takes the next line, without its end; whether it is a row. Every function from here on throws SessionError for a
    // value that is missing or cannot be read.
    bool take(std::string_view line);

    bool has(std::string_view column) const { return find(column) != mColumns.size(); }
    // Values of the newest row. The columns must be there.
    std::uint64_t time(std::string_view column) const;  // ns
    std::uint32_t whole(std::string_view column) const;
    float number(std::string_view column) const;

    // Of the newest line, from 1.
    std::size_t line() const { return mLine; }
    const std::string& file() const { return mFile; }

private:
    std::size_t find(std::string_view column) const;
    const std::string& cell(std::string_view column) const;
    [[noreturn]] void fail(const std::string& text) const;

    const std::string mFile;
    const std::string mOption;
    std::vector<std::string> mColumns;
    const TimeUnit mUnit;
    std::vector<std::string> mCells;
    std::size_t mLine = 0;
    bool mHasRows = false;
};

}  // namespace replay::import
