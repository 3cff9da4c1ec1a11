#include "tools/import/Report.h"

#include <iomanip>
#include <string_view>

namespace replay::import {
namespace {

constexpr std::size_t kShown = 20;  // the session holds all
constexpr int kLabelWidth = 48;
constexpr int kCountWidth = 13;

void row(std::ostream& out, std::string_view label, std::size_t count) {
    out << std::left << std::setw(kLabelWidth) << label << std::right << std::setw(kCountWidth) << count << '\n';
}

void rowIfAny(std::ostream& out, std::string_view label, std::size_t count) {
    if (count != 0) row(out, label, count);
}

}  // namespace

void Report::notice(std::size_t line, const std::string& text) {
    ++mNotices;
    if (mFirst.size() < kShown) mFirst.push_back("line " + std::to_string(line) + ": " + text);
}

void Report::print(std::ostream& out, const std::string& name, const CaptureFacts& facts) const {
    for (const std::string& text : mGeneral)
        out << name << ": " << text << '\n';
    if (mNotices != 0) {
        out << name << ": " << mNotices << (mNotices == 1 ? " hole\n" : " holes\n");
        for (const std::string& text : mFirst)
            out << "  " << text << '\n';
        if (mNotices > mFirst.size()) {
            out << "  ... and " << mNotices - mFirst.size() << " more, listed in the session\n";
        }
    }
    row(out, "messages of the library", facts.ownLines);
    rowIfAny(out, "  doubled", facts.doubledLines);
    rowIfAny(out, "  repeated", facts.repeatedLines);
    row(out, "hand-overs of samples", handOvers);
    rowIfAny(out, "  repaired", handOversRepaired);
    rowIfAny(out, "  lost", handOversLost);
    row(out, "frames", frames);
    rowIfAny(out, "  lost", framesLost);
    rowIfAny(out, "  asked for again, of which sensor nothing tells", framesUntold);
    row(out, "exposures", exact + repaired + different + resultless);
    row(out, "  replayed exactly", exact);
    row(out, "  replayed from repaired samples", repaired);
    row(out, "  replayed with another result", different);
    row(out, "  result lost", resultless);
}

}  // namespace replay::import
