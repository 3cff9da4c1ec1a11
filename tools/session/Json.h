// A JSON value as a session line holds it: sixteen bytes, read only. The LineParser that read the line keeps its texts
// and elements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "tools/session/Narrow.h"

namespace replay {

struct JsonMember;

class Json {
public:
    enum class Type : std::uint8_t { kNull, kFlag, kNegative, kUnsigned, kReal, kText, kList, kObject };

    Json() = default;  // null
    explicit Json(bool flag) : mUnsigned(flag), mType(Type::kFlag) {}
    // A whole number below zero, and any other.
    static Json negative(std::int64_t number);
    explicit Json(std::uint64_t number) : mUnsigned(number), mType(Type::kUnsigned) {}
    explicit Json(double number) : mReal(number), mType(Type::kReal) {}
    // What these stand on must outlive the value.
    explicit Json(std::string_view text)
        : mText(text.data()), mSize(narrow<std::uint32_t>(text.size())), mType(Type::kText) {}
    explicit Json(std::span<const Json> list)
        : mElements(list.data()), mSize(narrow<std::uint32_t>(list.size())), mType(Type::kList) {}
    // Members by ascending key, each key once.
    explicit Json(std::span<const JsonMember> members)
        : mMembers(members.data()), mSize(narrow<std::uint32_t>(members.size())), mType(Type::kObject) {}

    Type type() const { return mType; }
    bool isNull() const { return mType == Type::kNull; }
    bool isFlag() const { return mType == Type::kFlag; }
    bool isNumber() const { return mType >= Type::kNegative && mType <= Type::kReal; }
    bool isText() const { return mType == Type::kText; }
    bool isList() const { return mType == Type::kList; }
    bool isObject() const { return mType == Type::kObject; }

    // Each only for a value of its type.
    bool flag() const { return mUnsigned != 0; }
    std::int64_t negativeNumber() const { return mNegative; }
    std::uint64_t unsignedNumber() const { return mUnsigned; }
    double real() const { return mReal; }
    std::string_view text() const { return {mText, mSize}; }
    std::span<const Json> list() const { return {mElements, mSize}; }
    std::span<const JsonMember> members() const;

    // An object's member of that key, or null when there is none.
    const JsonMember* find(std::string_view key) const;

private:
    union {
        std::uint64_t mUnsigned = 0;
        std::int64_t mNegative;
        double mReal;
        const char* mText;
        const Json* mElements;
        const JsonMember* mMembers;
    };
    std::uint32_t mSize = 0;  // bytes of a text, elements of a list or an object; lines are far shorter
    Type mType = Type::kNull;
};

struct JsonMember {
    std::string_view key;
    Json value;
};

inline std::span<const JsonMember> Json::members() const {
    return {mMembers, mSize};
}

inline Json Json::negative(std::int64_t number) {
    Json json;
    json.mNegative = number;
    json.mType = Type::kNegative;
    return json;
}

inline const JsonMember* Json::find(std::string_view key) const {
    for (const JsonMember& member : members()) {
        if (member.key == key) return &member;
    }
    return nullptr;
}

}  // namespace replay
