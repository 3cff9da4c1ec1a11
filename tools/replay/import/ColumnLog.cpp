#include "tools/replay/import/ColumnLog.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <utility>

#include "tools/replay/Errors.h"
#include "tools/replay/import/Scan.h"

namespace replay::import {
namespace {

constexpr std::string_view kUnused = "-";
constexpr auto kMaxFloat = static_cast<double>(std::numeric_limits<float>::max());  // samples hold floats

std::vector<std::string> split(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts;
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
        if (text.empty()) return parts;
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
}

std::string_view nameOf(TimeUnit unit) {
    switch (unit) {
        case TimeUnit::kNs:
            return "ns";
        case TimeUnit::kUs:
            return "us";
        case TimeUnit::kMs:
            return "ms";
        case TimeUnit::kS:
            break;
    }
    return "s";
}

// A decimal number of units in ns, without a detour through binary fractions; digits below 1 ns are dropped.
bool toNs(std::string_view text, TimeUnit unit, std::uint64_t& ns) {
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t scale = static_cast<std::uint64_t>(unit);  // its value is that of one unit in ns
    std::uint64_t whole = 0;
    if (!takeValue(text, whole) || whole > kMax / scale) return false;
    ns = whole * scale;
    if (text.empty()) return true;
    if (!takeText(text, ".")) return false;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') return false;
        scale /= 10;
        const std::uint64_t part = static_cast<std::uint64_t>(digit - '0') * scale;  // a digit is none below 0
        if (part > kMax - ns) return false;
        ns += part;
    }
    return true;
}

bool toNumber(const std::string& text, double& value) {
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && end == text.c_str() + text.size();
}

}  // namespace

ColumnLog::ColumnLog(std::string file, std::string option, std::string_view columns, TimeUnit unit,
                     std::initializer_list<std::string_view> required, std::initializer_list<std::string_view> optional)
    : mFile(std::move(file)), mOption(std::move(option)), mColumns(split(columns, ", ")), mUnit(unit) {
    const auto isAmong = [](const auto& names, std::string_view name) {
        return std::ranges::find(names, name) != names.end();
    };
    for (const std::string& name : mColumns) {
        if (name == kUnused) continue;
        if (!isAmong(required, name) && !isAmong(optional, name)) {
            throw std::invalid_argument(mOption + ": no column is called \"" + name + "\"");
        }
        if (std::ranges::count(mColumns, name) > 1) {
            throw std::invalid_argument(mOption + ": the column \"" + name + "\" stands twice");
        }
    }
    for (const std::string_view name : required) {
        if (!has(name)) throw std::invalid_argument(mOption + ": the column \"" + std::string(name) + "\" is missing");
    }
}

bool ColumnLog::take(std::string_view line) {
    ++mLine;
    if (line.starts_with('#')) return false;
    mCells = split(line, " \t\r,;");
    double ignored = 0.0;
    const auto isWord = [&](const std::string& cell) { return !toNumber(cell, ignored); };
    if (mCells.empty() || (!mHasRows && std::ranges::all_of(mCells, isWord))) return false;
    mHasRows = true;
    if (mCells.size() < mColumns.size()) {
        fail(std::to_string(mCells.size()) + " columns, expected " + std::to_string(mColumns.size()) +
             "; name the columns that there are with " + mOption);
    }
    return true;
}

std::size_t ColumnLog::find(std::string_view column) const {
    // At most the number of columns.
    return static_cast<std::size_t>(std::ranges::find(mColumns, column) - mColumns.begin());
}

const std::string& ColumnLog::cell(std::string_view column) const {
    return mCells[find(column)];
}

std::uint64_t ColumnLog::time(std::string_view column) const {
    std::uint64_t ns = 0;
    const bool isTime = toNs(cell(column), mUnit, ns);
    // Samples and metadata hold signed times.
    if (!isTime || ns > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        fail(std::string(column) + ": expected a time in " + std::string(nameOf(mUnit)) + ", got \"" + cell(column) +
             "\"; check the columns (" + mOption + ") and the unit");
    }
    return ns;
}

std::uint32_t ColumnLog::whole(std::string_view column) const {
    std::string_view text = cell(column);
    std::uint32_t value = 0;
    if (!takeValue(text, value) || !text.empty()) {
        fail(std::string(column) + ": expected a whole number, got \"" + cell(column) + "\"; check the columns (" +
             mOption + ")");
    }
    return value;
}

float ColumnLog::number(std::string_view column) const {
    double value = 0.0;
    if (!toNumber(cell(column), value) || !(std::abs(value) <= kMaxFloat)) {
        fail(std::string(column) + ": expected a number, got \"" + cell(column) + "\"; check the columns (" + mOption +
             ")");
    }
    return static_cast<float>(value);  // what a sample holds
}

void ColumnLog::fail(const std::string& text) const {
    throw SessionError(mFile, mLine, text);
}

}  // namespace replay::import
