#include "tools/session/Expectation.h"

#include <cstdlib>

#include "tools/session/JsonText.h"
#include "tools/session/LineParser.h"
#include "tools/session/ObjectReader.h"

namespace replay {
namespace {

constexpr std::string_view kPrefix = "#expect ";

// As the device printed it: a number with "%f".
std::string readPrinted(ObjectReader& fields, std::string_view key) {
    const std::string text = fields.text(key);
    char* end = nullptr;
    std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size()) {
        failAt(fields.at(key), "expected a number as text, got " + jsonString(text));
    }
    return text;
}

}  // namespace

bool isExpectation(std::string_view line) {
    return line.starts_with(kPrefix) && line.substr(kPrefix.size()).starts_with('{');
}

Expectation readExpectation(std::string_view line) {
    LineParser parser;
    const Json& object = parser.parse(std::string(line.substr(kPrefix.size())));
    const Place place;
    ObjectReader fields(object, place);
    Expectation expected;
    if (fields.has("frame")) expected.frame = fields.integer<std::uint32_t>("frame");
    expected.sensor = fields.integer<std::int32_t>("sensor");
    expected.type = fields.bits32<std::uint32_t>("type");
    if (!fields.get("x").isNull() || !fields.get("y").isNull()) {
        expected.position = Expectation::Printed{readPrinted(fields, "x"), readPrinted(fields, "y")};
    }
    fields.finish();
    return expected;
}

}  // namespace replay
