#include "tools/session/LineParser.h"

#include <algorithm>
#include <memory>
#include <new>
#include <span>
#include <string>

#include <simdjson.h>

#include "tools/session/Errors.h"
#include "tools/session/JsonText.h"

namespace replay {

using simdjson::dom::element_type;

struct LineParser::Parser {
    simdjson::dom::parser parser;
};

// Makes values of what the parser found. Fails on a duplicate key and on deep nesting.
class LineParser::Builder {
public:
    explicit Builder(std::pmr::memory_resource& memory) : mMemory(memory) {}

    bool build(simdjson::dom::element element, Json& value) {
        if (mDepth > kMaxNesting) return false;
        switch (element.type()) {
            case element_type::NULL_VALUE:
                return set(value, Json());
            case element_type::BOOL:
                return set(value, Json(element.get_bool().value_unsafe()));
            case element_type::INT64:
                return set(value, whole(element.get_int64().value_unsafe()));
            case element_type::UINT64:
                return set(value, Json(std::uint64_t{element.get_uint64().value_unsafe()}));
            case element_type::DOUBLE:
                return set(value, Json(element.get_double().value_unsafe()));
            case element_type::STRING:
                return set(value, Json(element.get_string().value_unsafe()));
            case element_type::ARRAY:
                return nested([&] { return buildList(element.get_array().value_unsafe(), value); });
            case element_type::OBJECT:
                return nested([&] { return buildObject(element.get_object().value_unsafe(), value); });
        }
        return false;
    }

private:
    static bool set(Json& value, Json its) {
        value = its;
        return true;
    }

    static Json whole(std::int64_t number) {
        return number < 0 ? Json::negative(number) : Json(static_cast<std::uint64_t>(number));  // not negative
    }

    template <typename Build>
    bool nested(Build build) {
        ++mDepth;
        const bool built = build();
        --mDepth;
        return built;
    }

    // Room for the elements; they need no destruction.
    template <typename T, typename Container>
    std::span<T> roomFor(const Container& container) {
        // Not size(), which the parser does not count beyond 24 bits.
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& each : container)
            ++count;
        T* const room = std::pmr::polymorphic_allocator<T>(&mMemory).allocate(count);
        std::uninitialized_default_construct_n(room, count);
        return {room, count};
    }

    bool buildList(simdjson::dom::array list, Json& value) {
        const std::span<Json> elements = roomFor<Json>(list);
        auto next = elements.begin();
        for (const simdjson::dom::element element : list) {
            if (!build(element, *next++)) return false;
        }
        return set(value, Json(std::span<const Json>(elements)));
    }

    bool buildObject(simdjson::dom::object object, Json& value) {
        const std::span<JsonMember> members = roomFor<JsonMember>(object);
        auto next = members.begin();
        for (const auto& [key, element] : object) {
            next->key = key;
            if (!build(element, next++->value)) return false;
        }
        std::ranges::sort(members, {}, &JsonMember::key);
        if (std::ranges::adjacent_find(members, {}, &JsonMember::key) != members.end()) return false;
        return set(value, Json(std::span<const JsonMember>(members)));
    }

    std::pmr::memory_resource& mMemory;
    int mDepth = 0;
};

LineParser::LineParser() : mParser(std::make_unique<Parser>()) {}
LineParser::~LineParser() = default;

bool LineParser::tryParse(std::string_view line) {
    mMemory.release();
    simdjson::dom::element root;
    const auto error = mParser->parser.parse(line.data(), line.size()).get(root);
    if (error == simdjson::MEMALLOC) throw std::bad_alloc();
    return error == simdjson::SUCCESS && Builder(mMemory).build(root, mValue);
}

const Json& LineParser::parse(std::string_view line) {
    // Parsers take a zero byte for the end of the input and skip a byte order mark.
    if (line.find('\0') != std::string_view::npos) throw LineError("not valid JSON: contains a zero byte");
    if (line.starts_with("\xEF\xBB\xBF")) throw LineError("not valid JSON: begins with a byte order mark");
    // Escapes are left to one parser, so that there is one opinion of lone surrogates. They are rare.
    const bool plain = line.find('\\') == std::string_view::npos;
    if (plain && tryParse(line)) return mValue;
    const std::string checked = checkedLine(line);
    if (!tryParse(checked)) throw LineError("not valid JSON: cannot be read");
    return mValue;
}

}  // namespace replay
