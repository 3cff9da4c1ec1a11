#include "tools/replay/Expectations.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "tools/replay/Errors.h"
#include "tools/replay/Fields.h"
#include "tools/replay/SessionReader.h"

namespace replay {
namespace {

using Printed = Expectation::Printed;

constexpr double kRounding = 1.5e-6;  // one in the sixth decimal, with room for the binary form of both

std::string printed(double value) {
    char text[400];  // the largest double has 309 digits before the point
    std::snprintf(text, sizeof text, "%f", value);
    return text;
}

// As the device printed it: a number with "%f".
std::string readPrinted(Fields& fields, std::string_view key) {
    const std::string& text = fields.text(key);
    char* end = nullptr;
    std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size()) {
        failAt(fields.at(key), "expected a number as text, got " + Json(text).dump());
    }
    return text;
}

bool isNear(const std::string& a, const std::string& b) {
    return std::abs(std::strtod(a.c_str(), nullptr) - std::strtod(b.c_str(), nullptr)) < kRounding;
}

std::string words(const std::optional<Printed>& position) {
    return position ? "x " + position->x + " y " + position->y : std::string("no position");
}

std::optional<Printed> positionOf(const std::vector<ExposureOutcome>& outcomes, const Expectation& expected) {
    const auto found = std::ranges::find_if(outcomes, [&](const ExposureOutcome& outcome) {
        return outcome.sensor == expected.sensor && outcome.type == expected.type;
    });
    // A position with a reason is an earlier call's.
    if (found == outcomes.end() || !found->position || found->reason) return std::nullopt;
    return Printed{printed(found->position->x), printed(found->position->y)};
}

}  // namespace

Expectation readExpectation(std::string_view line) {
    const Json object = parseLine(line.substr(kExpectation.size()));
    const Place place;
    Fields fields(object, place);
    Expectation expected;
    if (fields.has("frame")) expected.frame = fields.integer<std::uint32_t>("frame");
    expected.sensor = fields.integer<std::int32_t>("sensor");
    expected.type = fields.bits32<std::uint32_t>("type");
    if (!fields.get("x").is_null() || !fields.get("y").is_null()) {
        expected.position = Printed{readPrinted(fields, "x"), readPrinted(fields, "y")};
    }
    fields.finish();
    return expected;
}

void Expectations::check(const Expectation& expected, std::ostream& out) {
    const std::optional<Printed> here = positionOf(mOutcomes, expected);
    const auto& device = expected.position;
    if (!here && !device) {
        ++mSame;
        return;
    }
    if (here && device) {
        const bool same = here->x == device->x && here->y == device->y;
        const bool near = isNear(here->x, device->x) && isNear(here->y, device->y);
        ++(same ? mSame : near ? mRounded : mDifferent);
        if (same || near) return;
    } else {
        ++(device ? mOnlyDevice : mOnlyHere);
    }
    out << "        ^ ";
    if (expected.frame) out << "frame " << *expected.frame << ": ";
    out << "the device gave " << words(device) << ", here " << words(here) << " (sensor " << expected.sensor
        << ", type " << expected.type << ")\n";
}

std::vector<std::pair<std::string_view, std::uint64_t>> Expectations::counts() const {
    const std::uint64_t all = mSame + mRounded + mDifferent + mOnlyDevice + mOnlyHere;
    if (all == 0) return {};
    return {{"exposures compared with the device", all},       {"  the same to six decimals, or none on both", mSame},
            {"  the same but for the last decimal", mRounded}, {"  another position", mDifferent},
            {"  a position on the device only", mOnlyDevice},  {"  a position here only", mOnlyHere}};
}

}  // namespace replay
