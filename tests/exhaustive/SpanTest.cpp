// Every table of a few samples at the times where the search for a span decides, against the search step by step.
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tests/exhaustive/Every.h"

namespace {

using lsc::ActiveSamples;
using lsc::SpanSearch;

// Relative to the exposure's start: around the match window, ties, and far away.
constexpr std::int64_t kOffsets[] = {-1000, -999, -500, -1, 0, 1, 2, 500, 999, 1000, 2000, 5000};
constexpr std::size_t kTimes = std::size(kOffsets) + 1;  // the last is time 0, an empty entry
constexpr std::uint32_t kShutters[] = {0, 1, 499, 500, 999, 1000, 1001, 1500, 2000};
// An ordinary start, and starts at which unsigned and signed times wrap.
constexpr std::uint64_t kStarts[] = {10'000, 0, (std::uint64_t{1} << 63) + 7};

std::uint64_t apart(std::uint64_t time, const lsc::ActiveSample& sample) {
    const auto distance = static_cast<std::int64_t>(time - static_cast<std::uint64_t>(sample.timeUs));
    return distance < 0 ? 0 - static_cast<std::uint64_t>(distance) : static_cast<std::uint64_t>(distance);
}

SpanSearch plainSpan(const ActiveSamples& samples, std::uint64_t startUs, std::uint32_t shutterUs) {
    SpanSearch span;
    const int last = samples.count - 1;
    int i = 0;
    while (i < last && (samples[i].timeUs == 0 || apart(startUs, samples[i]) >= 1000))
        ++i;
    span.startFound = i < last;
    span.startScanned = span.startFound ? i + 1 : i;
    if (!span.startFound) return span;
    span.start = apart(startUs, samples[i]) > apart(startUs, samples[i + 1]) ? i + 1 : i;
    const std::uint64_t finish = static_cast<std::uint64_t>(samples[span.start].timeUs) + shutterUs;
    int j = span.start;
    while (j < last && apart(finish, samples[j]) >= 1000)
        ++j;
    span.endScanned = j < last ? j + 1 : j;
    if (j < last && apart(finish, samples[j]) > apart(finish, samples[j + 1])) ++j;
    span.end = j == 0 ? last : j;
    return span;
}

bool same(const SpanSearch& a, const SpanSearch& b) {
    return a.start == b.start && a.end == b.end && a.startFound == b.startFound && a.startScanned == b.startScanned &&
           a.endScanned == b.endScanned;
}

std::string listed(const ActiveSamples& samples) {
    std::string text;
    for (std::int32_t i = 0; i < samples.count; ++i)
        text += " " + std::to_string(samples[i].timeUs);
    return text;
}

std::uint64_t checkTable(const ActiveSamples& samples, std::uint64_t startUs) {
    for (const std::uint32_t shutterUs : kShutters) {
        const SpanSearch found = lsc::findSpan(samples, {0, 0, 0, startUs, shutterUs});
        if (same(found, plainSpan(samples, startUs, shutterUs))) continue;
        ADD_FAILURE() << listed(samples) << ", start " << startUs << ", shutter " << shutterUs << ": " << found.start
                      << " to " << found.end;
    }
    return std::size(kShutters);
}

TEST(Every, TableHasTheSpanOfThePlainSearch) {
    std::uint64_t cases = 0;
    for (const std::uint64_t startUs : kStarts) {
        for (int count = 0; count <= test::kFew; ++count) {
            ActiveSamples samples;
            samples.count = count;
            test::forEveryTuple(
                count, kTimes,
                [&](int place, std::size_t value) {
                    const bool empty = value == std::size(kOffsets);
                    const std::uint64_t time = startUs + static_cast<std::uint64_t>(empty ? 0 : kOffsets[value]);
                    samples.entries[static_cast<std::size_t>(place)].timeUs =
                        empty ? 0 : static_cast<std::int64_t>(time);
                },
                [&] { cases += testing::Test::HasFailure() ? 0 : checkTable(samples, startUs); });
        }
    }
    RecordProperty("cases", std::to_string(cases));
}

}  // namespace
