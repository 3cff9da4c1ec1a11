#include "tools/report/Page.h"

#include <array>
#include <cmath>
#include <sstream>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "tools/report/ExposureRows.h"
#include "tools/report/PageTemplate.h"
#include "tools/report/Picture.h"
#include "tools/report/Strip.h"
#include "tools/report/Summary.h"
#include "tools/report/SummaryJson.h"
#include "tools/session/JsonWriter.h"

namespace replay {
namespace {

constexpr std::size_t kColumns = 30'000;  // periods of time, of two points each: a minute at 1 kHz is shown whole
constexpr std::size_t kMaxListed = 3000;  // exposures of a sensor with the same outcome

// Digits enough for nanoseconds of a session of hours; null for what no trace can show.
void add(JsonWriter& json, double number) {
    json.verbatim(std::isfinite(number) ? fmt::format("{:.13g}", number) : "null");
}

void add(JsonWriter& json, std::string_view key, const std::vector<double>& numbers) {
    json.key(key).beginList();
    for (const double number : numbers)
        add(json, number);
    json.endList();
}

void add(JsonWriter& json, std::string_view key, const std::vector<Figure>& figures) {
    json.key(key).beginList();
    for (const auto& [label, text] : figures)
        json.beginList().value(label).value(text).endList();
    json.endList();
}

std::size_t groupOf(const ExposureOutcome& outcome) {
    return outcome.reason ? indexOf(outcome.reason->kind) + 1 : 0;
}

// How the device differs, behind the groups; none where it does not.
std::optional<std::size_t> differenceOf(const RecordedExposure& exposure) {
    for (std::size_t i = 0; exposure.device && i < kUnmet.size(); ++i)
        if (kUnmet.at(i).first == exposure.device->agreement) return kGroups + i;
    return std::nullopt;
}

// The exposures of a sensor that lie in the part of the session, and which of them are listed. One that differs from
// the device's counts for its outcome, too, but is listed among those that differ alike: no other stands for it.
class Listing {
public:
    using Counts = std::array<std::size_t, kGroups + kUnmet.size()>;

    Listing(const SensorRecording& sensor, const Extent& extent, const TimeLimits& limits) {
        for (const RecordedExposure& exposure : sensor.exposures) {
            const auto times = timesOf(exposure.outcome);
            const bool within =
                times ? limits.touches(extent.ms(times->exposed), extent.ms(times->finished)) : !limits.given();
            if (!within) continue;
            mWithin.push_back(&exposure);
            ++mCounts[groupOf(exposure.outcome)];
            if (const auto difference = differenceOf(exposure)) ++mCounts.at(*difference);
        }
    }

    const Counts& counts() const { return mCounts; }
    // One exposure in so many stands for all of the group or difference.
    std::size_t stride(std::size_t group) const { return (mCounts.at(group) + kMaxListed - 1) / kMaxListed; }

    std::vector<const RecordedExposure*> listed() const {
        std::vector<const RecordedExposure*> listed;
        Counts seen{};
        for (const RecordedExposure* const exposure : mWithin) {
            const std::size_t group = differenceOf(*exposure).value_or(groupOf(exposure->outcome));
            if (seen.at(group)++ % stride(group) == 0) listed.push_back(exposure);
        }
        return listed;
    }

private:
    std::vector<const RecordedExposure*> mWithin;
    Counts mCounts{};
};

class Writer {
public:
    explicit Writer(const Page& page) : mPage(page), mExtent(page.recording.extent()) {}

    std::string text() {
        mJson.beginObject()
            .member("session", mPage.name)
            .member("accuracy", mPage.accuracy ? mPage.accuracy->tables : "");
        if (mPage.limits.fromMs) mJson.member("from", *mPage.limits.fromMs);
        if (mPage.limits.toMs) mJson.member("to", *mPage.limits.toMs);
        std::ostringstream summary;
        writeSummaryJson(summary, mPage.statistics, mPage.comparison);
        mJson.key("summary").verbatim(summary.str()).member("columns", kExposureColumns);
        add(mJson, "counts", countsOf(mPage.statistics, mPage.comparison));
        addGroups();
        mJson.key("sensors").beginList();
        for (const auto& [id, statistics] : mPage.statistics.sensors())
            addSensor(id, statistics);
        return mJson.endList().endObject().take();
    }

private:
    double ms(std::int64_t ns) const { return mExtent.ms(ns); }

    void addGroups() {
        mJson.key("groups").beginList();
        for (std::size_t group = 0; group < kGroups; ++group)
            mJson.beginList().value(groupText(group)).value(kColours.at(group)).endList();
        mJson.endList().key("differences").beginList();
        for (const auto& [agreement, words] : kUnmet)
            mJson.value(words);
        mJson.endList();
    }

    void addSensor(std::int32_t id, const SensorStatistics& statistics) {
        static const SensorRecording kNothing;
        const auto found = mPage.recording.sensors().find(id);
        const SensorRecording& sensor = found == mPage.recording.sensors().end() ? kNothing : found->second;
        mJson.beginObject().member("id", id);
        add(mJson, "figures", figuresOf(statistics));
        mJson.member("interval_us", statistics.frameUs.quantile(0.5));  // 0 for unknown
        const Picture picture(sensor, mExtent, mPage.limits, kColumns);
        if (!picture.isEmpty()) {
            add(mJson, "range", {picture.from(), picture.to()});
            add(mJson, "bounds", {picture.first(), picture.last()});
            mJson.member("samples", picture.samples()).member("sample_count", picture.countSamples());
        }
        const Listing listing(sensor, mExtent, mPage.limits);
        addCounts(listing);
        const bool judged = mPage.accuracy && mPage.accuracy->sensor == id;
        const LensPath path = judged ? mPage.accuracy->path : pathOf(sensor, 0);
        mJson.key("exposures").beginList();
        for (const RecordedExposure* const exposure : listing.listed())
            addExposure(*exposure, path);
        mJson.endList().endObject();
    }

    void addCounts(const Listing& listing) {
        mJson.member("counts", listing.counts()).key("strides").beginList();
        for (std::size_t group = 0; group < listing.counts().size(); ++group)
            mJson.value(listing.stride(group));
        mJson.endList();
    }

    void addExposure(const RecordedExposure& exposure, const LensPath& path) {
        const ExposureOutcome& outcome = exposure.outcome;
        mJson.beginObject().member("group", groupOf(outcome)).member("cells", exposureCells(outcome, path));
        // Of an exposure that was asked for again, the first time counts.
        const auto times = timesOf(outcome);
        if (times && (!outcome.reason || exposure.isUnserved()))
            add(mJson, "rows", {ms(times->exposed), ms(times->read), ms(times->finished)});
        if (const auto& span = outcome.span) add(mJson, "span", {ms(span->firstNs), ms(span->lastNs)});
        if (outcome.position) add(mJson, "position", {outcome.position->x, outcome.position->y});
        if (exposure.device) {
            mJson.member("differs", differenceOf(exposure).value_or(0));
            if (const auto& device = exposure.device->position) add(mJson, "device", {device->x, device->y});
        }
        mJson.endObject();
    }

    const Page& mPage;
    const Extent& mExtent;
    JsonWriter mJson;
};

// Within a script, where "<" might end it.
std::string escaped(const std::string& json) {
    std::string text;
    for (const char character : json)
        character == '<' ? text += "\\u003c" : text += character;
    return text;
}

}  // namespace

void writePage(std::ostream& out, const Page& page) {
    constexpr std::string_view kMark = "@DATA@";
    const std::string_view around = pageTemplate();
    const std::size_t at = around.find(kMark);
    out << around.substr(0, at) << escaped(Writer(page).text()) << around.substr(at + kMark.size());
}

}  // namespace replay
