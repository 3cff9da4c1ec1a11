#include "tools/report/SummaryJson.h"

#include <cmath>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/report/Findings.h"
#include "tools/session/JsonWriter.h"

namespace replay {
namespace {

using Fate = lsc::SampleQueue::Fate;

void writeDistribution(JsonWriter& json, std::string_view name, const Histogram& values) {
    json.key(name).beginObject().member("count", values.count());
    if (values.count() > 0) {
        json.member("median", values.quantile(0.5)).member("p95", values.quantile(0.95)).member("max", values.max());
    }
    json.endObject();
}

void writeReasons(JsonWriter& json, const SensorStatistics& sensor) {
    json.key("not_served").beginObject();
    for (std::size_t i = 0; i < kReasonKinds; ++i) {
        if (sensor.missing[i].count != 0) json.member(reasonText(reasonKind(i)), sensor.missing[i].count);
    }
    json.endObject();
}

void writeClock(JsonWriter& json, const SensorStatistics& sensor) {
    const Clock& clock = sensor.clock;
    json.key("clock_difference_us").beginObject().member("count", clock.count());
    if (clock.count() > 0) {
        json.member("median", clock.quantileUs(0.5))
            .member("min", clock.quantileUs(0))
            .member("max", clock.quantileUs(1));
    }
    if (const auto drift = sensor.drift()) json.member("drift_ppm", drift->ppm);
    json.endObject();
}

void writeSensor(JsonWriter& json, std::int32_t id, const SensorStatistics& sensor) {
    json.beginObject().member("sensor", id).member("exposures", sensor.exposures);
    writeReasons(json, sensor);
    json.member("samples", sensor.samples).member("samples_repeated", sensor.repeated);
    json.key("batches").beginObject();
    json.member("filed", sensor.filed()).member("split", sensor.batchesOf(Fate::kSplit));
    json.member("discarded", sensor.batchesOf(Fate::kDiscarded)).member("empty", sensor.batchesOf(Fate::kEmpty));
    json.member("missing", sensor.missingHandOvers()).endObject();
    writeDistribution(json, "match_us", sensor.matchUs);
    writeDistribution(json, "span", sensor.spanSamples);
    json.member("expected_span", sensor.expectedSpan()).member("long_spans", sensor.longSpans);
    writeDistribution(json, "sample_period_us", sensor.periodUs);
    json.member("gaps", sensor.gaps());
    writeDistribution(json, "frame_us", sensor.frameUs);
    writeDistribution(json, "exposure_us", sensor.exposureUs);
    writeDistribution(json, "readout_us", sensor.readoutUs);
    writeClock(json, sensor);
    json.endObject();
}

void writeExpectations(JsonWriter& json, const Comparison& comparison) {
    std::uint64_t compared = 0;
    std::uint64_t unmet = 0;
    for (const auto& [exposure, group] : comparison.groups()) {
        compared += group.compared;
        unmet += group.unmet;
    }
    json.key("expectations").beginObject().member("compared", compared).member("unmet", unmet).endObject();
}

// A count, or a time stamp, as what it is.
void write(JsonWriter& json, double number) {
    constexpr double kMost = 0x1p63;
    const bool whole = std::abs(number) < kMost && number == std::floor(number);
    whole ? json.value(static_cast<std::int64_t>(number)) : json.value(number);  // as tested
}

void writeFindings(JsonWriter& json, const Statistics& statistics) {
    json.key("findings").beginList();
    for (const Finding& finding : findings(statistics)) {
        json.beginObject().member("code", finding.code).member("sensor", finding.sensor);
        for (const auto& [name, number] : finding.numbers)
            write(json.key(name), number);
        json.member("advice", finding.advice).endObject();
    }
    json.endList();
}

void writeAccuracy(JsonWriter& json, const Accuracy& of) {
    json.beginObject().member("exposures", of.exposures);
    const auto write = [&](std::string_view name, double ErrorSize::*size) {
        json.key(name).beginObject().member("x", of.x.*size).member("y", of.y.*size);
        json.member("both", of.both.*size).endObject();
    };
    write("rms", &ErrorSize::rms);
    write("p95", &ErrorSize::most);
    write("max", &ErrorSize::worst);
    if (of.lag) {
        json.member("lag_us", static_cast<double>(of.lag->ns) / lsc::kNsPerUs);  // far below 2^53
        json.member("rms_without_lag", of.lag->restRms);
    }
    json.endObject();
}

void writeAccuracy(JsonWriter& json, const AccuracySummary& accuracy) {
    json.key("accuracy").beginObject().member("sensor", accuracy.sensor).member("path", accuracy.path);
    json.key("modes").beginList();
    for (const Accuracy& mode : accuracy.modes)
        writeAccuracy(json, mode);
    json.endList();
    if (accuracy.weighted) writeAccuracy(json.key("weighted"), *accuracy.weighted);
    json.endObject();
}

}  // namespace

void writeSummaryJson(std::ostream& out, const Statistics& statistics, const Comparison& comparison,
                      const std::optional<AccuracySummary>& accuracy) {
    JsonWriter json;
    json.beginObject().member("frames", statistics.frames()).key("sensors").beginList();
    for (const auto& [id, sensor] : statistics.sensors())
        writeSensor(json, id, sensor);
    json.endList();
    writeExpectations(json, comparison);
    if (accuracy) writeAccuracy(json, *accuracy);
    writeFindings(json, statistics);
    out << json.endObject().text() << '\n';
}

}  // namespace replay
