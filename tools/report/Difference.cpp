#include "tools/report/Difference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <tuple>

#include <fmt/format.h>

#include "tools/report/ExposureRows.h"
#include "tools/session/Csv.h"

namespace replay {
namespace {

constexpr std::size_t kMaxExamples = 20;

using Column = ExposureColumn;

// Sensor, type, start of frame, and how many such exposures came before.
using Key = std::tuple<std::string, std::string, std::string, std::size_t>;

class Keys {
public:
    Key of(const ExposureRow& row) {
        return {row.sensor, row.type, row.startNs, mSeen[{row.sensor, row.type, row.startNs}]++};
    }

private:
    std::map<std::tuple<std::string, std::string, std::string>, std::size_t> mSeen;
};

std::string resultOf(const ExposureRow& row) {
    return row.isServed() ? fmt::format("x {} y {}", row.x, row.y) : row.reason;
}

void note(Difference& difference, const ExposureRow& row, const std::string& before, const std::string& after) {
    if (difference.examples.size() == kMaxExamples) return;
    difference.examples.push_back(
        fmt::format("sensor {} type {} start of frame {}: {} -> {}", row.sensor, row.type, row.startNs, before, after));
}

double distance(const ExposureRow& a, const ExposureRow& b) {
    const auto number = [](const std::string& text) { return std::strtod(text.c_str(), nullptr); };
    return std::hypot(number(a.x) - number(b.x), number(a.y) - number(b.y));
}

void comparePair(Difference& difference, const ExposureRow& before, const ExposureRow& after) {
    if (before.isServed() && after.isServed()) {
        difference.distances.push_back(distance(before, after));
        if (before.x == after.x && before.y == after.y) return;
        ++difference.positions;
    } else if (before.isServed() || after.isServed()) {
        ++(before.isServed() ? difference.before : difference.after).onlyServed;
    } else {
        if (before.reason == after.reason) return;
        ++difference.reasons;
    }
    note(difference, before, resultOf(before), resultOf(after));
}

Difference::Side sideOf(const std::vector<ExposureRow>& rows) {
    Difference::Side side;
    side.exposures = rows.size();
    for (const ExposureRow& row : rows)
        side.served += row.isServed() ? 1U : 0U;
    return side;
}

std::string distribution(const std::vector<double>& ascending) {
    if (ascending.empty()) return "none";
    const auto at = [&](std::size_t percent) { return ascending[(ascending.size() * percent + 99) / 100 - 1]; };
    return fmt::format("median {:.6f}, 95 % up to {:.6f}, largest {:.6f}", at(50), at(95), ascending.back());
}

}  // namespace

std::vector<ExposureRow> readExposures(std::istream& input, const std::string& name) {
    CsvReader reader(input, name, kExposureColumns);
    std::vector<ExposureRow> rows;
    for (auto row = reader.next(); !row.empty(); row = reader.next()) {
        rows.push_back({row[Column::kSensor], row[Column::kType], row[Column::kStart], row[Column::kX], row[Column::kY],
                        row[Column::kDetail]});
        if (rows.back().x.empty() && rows.back().reason.empty()) reader.fail("expected a position or a reason");
    }
    return rows;
}

Difference compareExposures(const std::vector<ExposureRow>& before, const std::vector<ExposureRow>& after) {
    Difference difference;
    difference.before = sideOf(before);
    difference.after = sideOf(after);
    std::map<Key, const ExposureRow*> others;
    Keys keysAfter;
    for (const ExposureRow& row : after)
        others.emplace(keysAfter.of(row), &row);
    Keys keysBefore;
    for (const ExposureRow& row : before) {
        const auto match = others.extract(keysBefore.of(row));
        if (!match.empty()) {
            comparePair(difference, row, *match.mapped());
            continue;
        }
        ++difference.before.unmatched;
        note(difference, row, resultOf(row), "not asked for");
    }
    Keys keysLeft;  // in the order of the rows
    for (const ExposureRow& row : after) {
        if (!others.contains(keysLeft.of(row))) continue;
        ++difference.after.unmatched;
        note(difference, row, "not asked for", resultOf(row));
    }
    std::ranges::sort(difference.distances);
    return difference;
}

void printDifference(std::ostream& out, const Difference& difference) {
    const auto counts = [&out, &difference](const char* label, std::uint64_t Difference::Side::*count) {
        out << fmt::format("{:<40}{:>10}{:>10}\n", label, difference.before.*count, difference.after.*count);
    };
    for (const std::string& example : difference.examples)
        out << example << '\n';
    out << (difference.examples.empty() ? "" : "\n") << fmt::format("{:<40}{:>10}{:>10}\n", "", "before", "after");
    counts("exposures", &Difference::Side::exposures);
    counts("exposures served", &Difference::Side::served);
    counts("exposures on this side only", &Difference::Side::unmatched);
    counts("exposures served on this side only", &Difference::Side::onlyServed);
    out << fmt::format("{:<40}{:>10}\n", "different positions", difference.positions)
        << fmt::format("{:<40}{:>10}\n", "different reasons", difference.reasons)
        << "distance of positions                   " << distribution(difference.distances) << '\n';
}

}  // namespace replay
