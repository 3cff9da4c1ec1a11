#include "tools/replay/import/LogLine.h"

#include <algorithm>

#include "tools/replay/import/Scan.h"

namespace replay::import {
namespace {

constexpr std::string_view kPriorities = "VDIWEFSA";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// What stands before the next space; the spaces before and after it go, too.
std::string_view takeWord(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(word.size());
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    return word;
}

// Whether the word has the shape of the pattern, in which 0 stands for a digit; a fraction of one to nine digits may
// follow where `fraction` says so.
bool hasShape(std::string_view word, std::string_view shape, bool fraction) {
    if (word.size() < shape.size()) return false;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == '0' ? !isDigit(word[i]) : word[i] != shape[i]) return false;
    }
    word.remove_prefix(shape.size());
    if (!fraction) return word.empty();
    constexpr std::size_t kNanosecondDigits = 9;
    if (!takeText(word, ".") || word.empty() || word.size() > kNanosecondDigits) return false;
    return std::ranges::all_of(word, isDigit);
}

bool isZone(std::string_view word) {
    return hasShape(word, "+0000", false) || hasShape(word, "-0000", false);
}

// Seconds since some start, as with -v epoch and -v monotonic.
bool isSeconds(std::string_view word) {
    const std::size_t point = word.find('.');
    if (point == std::string_view::npos || point == 0) return false;
    return std::ranges::all_of(word.substr(0, point), isDigit) && hasShape(word.substr(point), "", true);
}

// Takes date and time, or seconds, and a zone off the front; an empty text, with nothing taken, when there are none.
std::string_view takeTime(std::string_view& rest) {
    std::string_view after = rest;
    const char* const begin = rest.data();
    std::string_view last = takeWord(after);
    if (hasShape(last, "00-00", false) || hasShape(last, "0000-00-00", false)) {
        last = takeWord(after);
        if (!hasShape(last, "00:00:00", true)) return {};
    } else if (!isSeconds(last)) {
        return {};
    }
    // Both pointers lie in the one text.
    const auto size = static_cast<std::size_t>(last.data() + last.size() - begin);
    const std::string_view time = rest.substr(0, size);
    std::string_view zone = after;
    if (isZone(takeWord(zone))) after = zone;
    rest = after;
    return time;
}

template <typename T>
bool isNumber(std::string_view word, T& number) {
    return takeValue(word, number) && word.empty();
}

std::string_view trimmedEnd(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// "TAG: text", the tag padded to eight characters.
bool splitTag(std::string_view rest, LogLine& line) {
    const std::size_t colon = rest.find(": ");
    const bool empty = colon == std::string_view::npos && rest.ends_with(':');
    if (colon == std::string_view::npos && !empty) return false;
    line.tag = trimmedEnd(rest.substr(0, empty ? rest.size() - 1 : colon));
    line.text = empty ? std::string_view() : rest.substr(colon + 2);
    return true;
}

// "[UID] PID TID P TAG: text"
bool parseThreaded(std::string_view rest, LogLine& line) {
    std::string_view words[3];
    for (std::string_view& word : words)
        word = takeWord(rest);
    if (words[2].size() != 1 || kPriorities.find(words[2][0]) == std::string_view::npos) {
        words[0] = words[1];  // the user goes
        words[1] = words[2];
        words[2] = takeWord(rest);
    }
    std::uint32_t tid = 0;
    if (!isNumber(words[0], line.pid) || !isNumber(words[1], tid)) return false;
    if (words[2].size() != 1 || kPriorities.find(words[2][0]) == std::string_view::npos) return false;
    line.tid = tid;
    line.priority = words[2][0];
    return splitTag(rest, line);
}

// "P/TAG( PID): text", with "UID:" before the process where the user is printed.
bool parseBrief(std::string_view rest, LogLine& line) {
    if (rest.size() < 2 || rest[1] != '/' || kPriorities.find(rest[0]) == std::string_view::npos) return false;
    line.priority = rest[0];
    rest.remove_prefix(2);
    for (std::size_t close = rest.find("):"); close != std::string_view::npos; close = rest.find("):", close + 1)) {
        const std::size_t open = rest.rfind('(', close);
        if (open == std::string_view::npos) continue;
        std::string_view process = rest.substr(open + 1, close - open - 1);
        process.remove_prefix(process.rfind(':') + 1);  // npos + 1 is 0
        process.remove_prefix(std::min(process.find_first_not_of(' '), process.size()));
        if (!isNumber(process, line.pid)) continue;
        line.tag = trimmedEnd(rest.substr(0, open));
        line.text = rest.substr(close + 2);
        takeText(line.text, " ");
        return true;
    }
    return false;
}

}  // namespace

std::optional<LogLine> parseLogLine(std::string_view text) {
    LogLine line;
    line.time = takeTime(text);
    if (parseBrief(text, line)) return line;
    if (!line.time.empty() && parseThreaded(text, line)) return line;
    return std::nullopt;
}

}  // namespace replay::import
