#include "tools/session/LineParser.h"

#include <algorithm>
#include <iterator>
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

    template <typename Container>
    static std::size_t countOf(const Container& container) {
        constexpr std::size_t kMany = 0xFFFFFF;  // the parser does not count further
        if (container.size() < kMany) return container.size();
        return static_cast<std::size_t>(std::distance(container.begin(), container.end()));  // not negative
    }

    // Room for the elements; they need no destruction.
    template <typename T, typename Container>
    std::span<T> roomFor(const Container& container) {
        const std::size_t count = countOf(container);
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

bool LineParser::tryParse(const std::string& line) {
    mMemory.release();
    simdjson::dom::element root;
    const auto error = mParser->parser.parse(line).get(root);
    if (error == simdjson::MEMALLOC) throw std::bad_alloc();
    return error == simdjson::SUCCESS && Builder(mMemory).build(root, mValue);
}

const Json& LineParser::parse(const std::string& line) {
    // Escapes are left to one parser, so that there is one opinion of lone surrogates. They are rare.
    const bool plain = line.find('\\') == std::string::npos;
    if (plain && tryParse(line)) return mValue;
    if (!tryParse(checkedLine(line))) throw LineError("not valid JSON: cannot be read");
    return mValue;
}

}  // namespace replay
