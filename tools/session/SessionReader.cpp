#include "tools/session/SessionReader.h"

#include <set>
#include <vector>

#include "tools/session/Errors.h"
#include "tools/session/Expectation.h"

namespace replay {
namespace {

constexpr int kMaxNesting = 16;                 // the format needs 5
constexpr std::size_t kMaxParserMessage = 200;  // bytes; the parser may quote a whole value

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

// The parser counts lines of its own, which would contradict the session's line number: only the column is kept.
std::string parserMessage(std::string_view what) {
    constexpr std::string_view kColumn = ", column ";
    const std::size_t column = what.find(kColumn);
    const std::size_t bracket = what.find("] ");
    std::string text = "not valid JSON: ";
    if (column != std::string_view::npos) {
        text = "not valid JSON at column ";
        what.remove_prefix(column + kColumn.size());
    } else if (bracket != std::string_view::npos) {
        what.remove_prefix(bracket + 2);
    }
    return text.append(what.substr(0, kMaxParserMessage));
}

// Watches a value being parsed for what the parser itself lets pass.
class ParseWatch {
public:
    bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
        if (depth > kMaxNesting) throw LineError("nested more than " + std::to_string(kMaxNesting) + " levels deep");
        if (event == Json::parse_event_t::object_start) mKeys.emplace_back();
        if (event == Json::parse_event_t::object_end) mKeys.pop_back();
        if (event == Json::parse_event_t::key && !mKeys.back().insert(parsed.get<std::string>()).second) {
            throw LineError("duplicate key " + parsed.dump());
        }
        return true;
    }

private:
    std::vector<std::set<std::string>> mKeys;  // of each object that is open
};

}  // namespace

bool SessionReader::next() {
    while (std::getline(mInput, mText)) {
        ++mNumber;
        mBytes += mText.size() + 1;
        if (!mText.empty() && mText.back() == '\r') mText.pop_back();
        if (!isBlank(mText) && (mText.front() != '#' || isExpectation(mText))) return true;
    }
    if (mInput.bad()) throw StreamError(mName + ": cannot be read");
    return false;
}

Json parseLine(std::string_view text) {
    // The parser takes a zero byte for the end of the input and skips a byte order mark.
    if (text.find('\0') != std::string_view::npos) throw LineError("not valid JSON: contains a zero byte");
    if (text.starts_with("\xEF\xBB\xBF")) throw LineError("not valid JSON: begins with a byte order mark");
    try {
        return Json::parse(text, [watch = ParseWatch()](int depth, Json::parse_event_t event, Json& parsed) mutable {
            return watch(depth, event, parsed);
        });
    } catch (const Json::exception& error) {
        throw LineError(parserMessage(error.what()));
    }
}

}  // namespace replay
