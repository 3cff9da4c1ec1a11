#include "tools/session/JsonText.h"

#include <set>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/session/Errors.h"

namespace replay {
namespace {

using Tree = nlohmann::json;

constexpr std::size_t kMaxParserMessage = 200;  // bytes; the parser may quote a whole value

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

// Hears the parser: refuses what it lets pass by itself, and writes the rest down.
class Scribe {
public:
    std::string take() { return std::move(mText); }

    bool null() { return add("null"); }
    bool boolean(bool value) { return add(value ? "true" : "false"); }
    bool number_integer(std::int64_t value) { return add(std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) { return add(std::to_string(value)); }
    bool number_float(double value, const std::string& /*digits*/) { return add(Tree(value).dump()); }
    bool string(const std::string& value) { return add(jsonString(value)); }
    bool binary(const std::vector<std::uint8_t>& /*value*/) { return false; }  // not in text
    bool start_array(std::size_t /*unknown*/) { return open('['); }
    bool end_array() { return close(']'); }
    bool start_object(std::size_t /*unknown*/) { return open('{'); }
    bool end_object() { return close('}'); }
    bool key(const std::string& key) {
        checkDepth();
        if (!mKeys.back().insert(key).second) throw LineError("duplicate key " + jsonString(key));
        add(jsonString(key));
        mText += ':';
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const Tree::exception& error) {
        throw LineError(parserMessage(error.what()));
    }

private:
    void checkDepth() const {
        if (mKeys.size() > kMaxNesting) {
            throw LineError("nested more than " + std::to_string(kMaxNesting) + " levels deep");
        }
    }

    bool add(std::string_view text) {
        checkDepth();
        constexpr std::string_view kNoComma = "[{:";
        if (!mText.empty() && kNoComma.find(mText.back()) == std::string_view::npos) mText += ',';
        mText += text;
        return true;
    }
    bool open(char bracket) {
        add(std::string_view(&bracket, 1));
        mKeys.emplace_back();
        return true;
    }
    bool close(char bracket) {
        mKeys.pop_back();
        mText += bracket;
        return true;
    }

    std::string mText;
    std::vector<std::set<std::string>> mKeys;  // of each list or object that is open
};

void append(std::string& text, const Json& value, std::size_t maxBytes);

void appendElements(std::string& text, const Json& list, std::size_t maxBytes) {
    text += '[';
    for (const Json& element : list.list()) {
        if (text.back() != '[') text += ',';
        append(text, element, maxBytes);
        if (text.size() >= maxBytes) return;
    }
    text += ']';
}

void appendMembers(std::string& text, const Json& object, std::size_t maxBytes) {
    text += '{';
    for (const auto& [key, value] : object.members()) {
        if (text.back() != '{') text += ',';
        text += jsonString(key) + ':';
        append(text, value, maxBytes);
        if (text.size() >= maxBytes) return;
    }
    text += '}';
}

void append(std::string& text, const Json& value, std::size_t maxBytes) {
    switch (value.type()) {
        case Json::Type::kNull:
            text += "null";
            break;
        case Json::Type::kFlag:
            text += value.flag() ? "true" : "false";
            break;
        case Json::Type::kNegative:
            text += std::to_string(value.negativeNumber());
            break;
        case Json::Type::kUnsigned:
            text += std::to_string(value.unsignedNumber());
            break;
        case Json::Type::kReal:
            text += Tree(value.real()).dump();
            break;
        case Json::Type::kText:
            text += jsonString(value.text());
            break;
        case Json::Type::kList:
            return appendElements(text, value, maxBytes);
        case Json::Type::kObject:
            return appendMembers(text, value, maxBytes);
    }
}

}  // namespace

std::string checkedLine(std::string_view line) {
    if (line.starts_with("\x1F\x8B"))
        throw LineError("compressed: unpack the session first, or play gunzip -c FILE | lsc_replay -");
    // The parser takes a zero byte for the end of the input and skips a byte order mark.
    if (line.find('\0') != std::string_view::npos) {
        throw LineError("not valid JSON: contains a zero byte; if it is UTF-16, make it UTF-8 first, with iconv");
    }
    if (line.starts_with("\xEF\xBB\xBF")) throw LineError("not valid JSON: begins with a byte order mark");
    Scribe scribe;
    Tree::sax_parse(line, &scribe);
    return scribe.take();
}

std::string jsonString(std::string_view text) {
    return Tree(text).dump(-1, ' ', false, Tree::error_handler_t::replace);
}

std::string shown(const Json& value, std::size_t maxBytes) {
    std::string text;
    append(text, value, maxBytes);
    return text;
}

}  // namespace replay
