#include "tools/import/LogLine.h"

#include <algorithm>

#include "tools/import/Scan.h"

namespace replay::import {
namespace {

constexpr std::string_view kPriorities = "VDIWEFSA";

bool isDigit(char c) {
    return detail::isDigit(c);
}

bool isPriority(char c) {
    return kPriorities.find(c) != std::string_view::npos;
}

void skipSpaces(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
}

// What stands before the next space; the spaces before and after it go, too.
std::string_view takeWord(std::string_view& rest) {
    skipSpaces(rest);
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(word.size());
    skipSpaces(rest);
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
    if (rest.empty() || !(isDigit(rest.front()) || rest.front() == ' ')) return {};
    std::string_view after = rest;
    skipSpaces(after);
    const char* const begin = after.data();
    std::string_view last = takeWord(after);
    if (hasShape(last, "00-00", false) || hasShape(last, "0000-00-00", false)) {
        last = takeWord(after);
        if (!hasShape(last, "00:00:00", true)) return {};
    } else if (!isSeconds(last)) {
        return {};
    }
    // Both pointers lie in the one text.
    const std::string_view time(begin, static_cast<std::size_t>(last.data() + last.size() - begin));
    if (!after.empty() && (after.front() == '+' || after.front() == '-')) {
        std::string_view zone = after;
        if (isZone(takeWord(zone))) after = zone;
    }
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
    const auto isLetter = [](std::string_view word) { return word.size() == 1 && isPriority(word[0]); };
    if (!isLetter(words[2])) {
        words[0] = words[1];  // the user goes
        words[1] = words[2];
        words[2] = takeWord(rest);
    }
    std::uint32_t pid = 0;
    std::uint32_t tid = 0;
    if (!isNumber(words[0], pid) || !isNumber(words[1], tid) || !isLetter(words[2])) return false;
    line.pid = pid;
    line.tid = tid;
    line.priority = words[2][0];
    return splitTag(rest, line);
}

// The process within brackets, with "UID:" before it where the user is printed.
bool parseProcess(std::string_view within, LogLine& line) {
    within.remove_prefix(within.rfind(':') + 1);  // npos + 1 is 0
    skipSpaces(within);
    std::uint32_t pid = 0;
    if (!isNumber(within, pid)) return false;
    line.pid = pid;
    return true;
}

// "P/TAG( PID): text". A bracket within the tag or the text is passed over; only so many, or a line of brackets would
// take long.
bool parseBrief(std::string_view rest, LogLine& line) {
    constexpr int kMaxBrackets = 8;
    std::size_t close = rest.find("):");
    for (int i = 0; i < kMaxBrackets && close != std::string_view::npos; ++i, close = rest.find("):", close + 1)) {
        const std::size_t open = rest.rfind('(', close);
        if (open == std::string_view::npos || !parseProcess(rest.substr(open + 1, close - open - 1), line)) continue;
        line.tag = trimmedEnd(rest.substr(0, open));
        if (line.tag.find(": ") != std::string_view::npos) return false;  // of a text
        line.text = rest.substr(close + 2);
        takeText(line.text, " ");
        return true;
    }
    return false;
}

// "P( PID) text  (TAG)"
bool parseByProcess(std::string_view rest, LogLine& line) {
    const std::size_t close = rest.find(") ");
    if (close == std::string_view::npos || !rest.ends_with(')')) return false;
    if (!parseProcess(rest.substr(0, close), line)) return false;
    rest.remove_prefix(close + 2);
    const std::size_t tag = rest.rfind("  (");
    if (tag == std::string_view::npos) return false;
    line.tag = trimmedEnd(rest.substr(tag + 3, rest.size() - tag - 4));
    line.text = rest.substr(0, tag);
    return true;
}

}  // namespace

std::optional<LogLine> parseLogLine(std::string_view text) {
    LogLine line;
    line.time = takeTime(text);
    if (text.size() < 2) return std::nullopt;
    if (!line.time.empty() && text[1] != '/') {
        return parseThreaded(text, line) ? std::optional(line) : std::nullopt;
    }
    if (!isPriority(text[0])) return std::nullopt;
    line.priority = text[0];
    const std::string_view rest = text.substr(2);
    if (text[1] == '(') return parseByProcess(rest, line) ? std::optional(line) : std::nullopt;
    if (text[1] != '/') return std::nullopt;
    if (parseBrief(rest, line)) return line;
    line.pid.reset();
    if (line.time.empty() && splitTag(rest, line)) return line;
    return std::nullopt;
}

std::optional<LogLine> parseLongHead(std::string_view text) {
    if (!takeText(text, "[ ") || !text.ends_with(" ]")) return std::nullopt;
    text.remove_suffix(2);
    LogLine line;
    line.time = takeTime(text);
    const std::size_t slash = text.find('/');
    if (line.time.empty() || slash == std::string_view::npos || slash < 2 || !isPriority(text[slash - 1])) {
        return std::nullopt;
    }
    line.priority = text[slash - 1];
    line.tag = trimmedEnd(text.substr(slash + 1));
    const std::string_view ids = trimmedEnd(text.substr(0, slash - 1));
    const std::size_t colon = ids.rfind(':');
    std::string_view tid = ids.substr(std::min(colon, ids.size() - 1) + 1);
    skipSpaces(tid);
    std::uint32_t thread = 0;
    if (colon == std::string_view::npos || !isNumber(tid, thread)) return std::nullopt;
    line.tid = thread;
    return parseProcess(ids.substr(0, colon), line) ? std::optional(line) : std::nullopt;
}

std::string_view LogParser::withoutColours(std::string_view line) {
    constexpr char kEscape = '\x1b';
    if (line.find(kEscape) == std::string_view::npos) return line;
    mPlain.clear();
    while (!line.empty()) {
        const std::size_t escape = std::min(line.find(kEscape), line.size());
        mPlain.append(line.substr(0, escape));
        line.remove_prefix(escape);
        line.remove_prefix(line.empty() ? 0 : std::min(line.find('m'), line.size() - 1) + 1);
    }
    return mPlain;
}

std::optional<LogLine> LogParser::parse(std::string_view text) {
    text = withoutColours(text);
    if (parseLongHead(text)) {
        mHead.swap(mLastHead);
        mHead = text;
        if (!mLong) {
            mLong = true;
            return std::nullopt;
        }
        return parseLongHead(mLastHead);  // its text is missing
    }
    if (mLong) {
        mLong = false;
        std::optional<LogLine> line = parseLongHead(mHead);
        line->text = text;
        return line;
    }
    return parseLogLine(text);
}

}  // namespace replay::import
