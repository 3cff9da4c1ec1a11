#include "tools/report/Trace.h"

#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

// The session's own time in us, every nanosecond kept.
std::string microseconds(std::int64_t ns) {
    const std::uint64_t size =
        ns < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(ns) : static_cast<std::uint64_t>(ns);
    return fmt::format("{}{}.{:03}", ns < 0 ? "-" : "", size / 1000, size % 1000);
}

// What is known of an exposure.
void describe(JsonWriter& json, const ExposureOutcome& outcome, std::size_t index) {
    json.member("index", index);
    if (outcome.type) json.member("type", *outcome.type);
    if (outcome.position) json.member("x", outcome.position->x).member("y", outcome.position->y);
    if (outcome.span) json.member("samples", outcome.span->samples).member("match_us", outcome.span->distanceUs);
    if (outcome.reason) json.member("reason", outcome.reason->text);
}

bool isUnserved(const ExposureOutcome& outcome) {
    return outcome.reason && outcome.reason->kind != Reason::Kind::kAlreadyWritten;
}

}  // namespace

Trace::Trace(std::ostream& out, std::string name, const TimeLimits& limits)
    : mOut(out), mName(std::move(name)), mLimits(limits) {
    mOut << "{\"displayTimeUnit\":\"ns\",\"traceEvents\":[";
}

void Trace::handedOver(const HandOver& handOver) {
    mExtent.handedOver(handOver);
    Process& its = process(handOver.sensor);
    for (const auto& sample : handOver.samples) {
        const std::int64_t time = sample.timestamp;
        const std::string x = counter("hall x", its, time, "x", sample.oisX);
        const std::string y = counter("hall y", its, time, "y", sample.oisY);
        add(its, time, true, {time, time, x + (x.empty() || y.empty() ? "" : ",\n") + y});
    }
    const auto& [fate, splitTime] = std::tie(handOver.filing.fate, handOver.filing.splitTime);
    const bool split = fate == lsc::SampleQueue::Fate::kSplit;
    if (!split && fate != lsc::SampleQueue::Fate::kDiscarded) return;
    const std::int64_t time = split ? splitTime : handOver.samples.front().timestamp;
    begin(split ? "split" : "drop", 'i', its, kBatches, time).member("s", "t").key("args").beginObject();
    mJson.member("frame", handOver.frame).member("samples", handOver.samples.size());
    add(its, time, false, {time, time, end()});
}

void Trace::exposuresAsked(const std::vector<ExposureOutcome>& outcomes) {
    mExtent.exposuresAsked(outcomes);
    for (const ExposureOutcome& outcome : outcomes) {
        Process& its = process(outcome.sensor);
        addExposure(its, outcome);
        ++its.exposures;
    }
}

void Trace::finish() {
    for (auto& [id, its] : mProcesses) {
        while (!its.waiting.empty())
            writeFirst(its);
    }
    mOut << "\n]}\n";
}

Trace::Process& Trace::process(std::int32_t sensor) {
    const auto [found, added] = mProcesses.try_emplace(sensor);
    Process& its = found->second;
    if (!added) return its;
    its.id = narrow<int>(mProcesses.size());
    name("process_name", its, 0, fmt::format("sensor {} of {}", sensor, mName));
    for (const auto& [track, text] : {std::pair(kHall, "hall"), {kExposures, "exposures"}, {kBatches, "batches"}})
        name("thread_name", its, track, text);
    return its;
}

void Trace::name(std::string_view kind, const Process& process, int track, std::string_view text) {
    begin(kind, 'M', process, static_cast<Track>(track)).key("args").beginObject().member("name", text);
    write(end());
}

JsonWriter& Trace::begin(std::string_view name, char phase, const Process& process, Track track) {
    mJson.beginObject().member("name", name).member("ph", std::string(1, phase));
    return mJson.member("pid", process.id).member("tid", int{track});
}

JsonWriter& Trace::begin(std::string_view name, char phase, const Process& process, Track track, std::int64_t timeNs) {
    return begin(name, phase, process, track).key("ts").verbatim(microseconds(timeNs));
}

// Ends the arguments and the event.
std::string Trace::end() {
    mJson.endObject().endObject();
    return mJson.take();
}

std::string Trace::counter(std::string_view name, const Process& process, std::int64_t timeNs, std::string_view axis,
                           float value) {
    if (!std::isfinite(value)) return {};
    begin(name, 'C', process, kHall, timeNs).key("args").beginObject().member(axis, value);
    return end();
}

void Trace::addSlice(Process& process, const char* name, const Slice& slice, const Slice& whole,
                     const ExposureOutcome& outcome) {
    // An id for each slice: a viewer pairs what shares category, id and process.
    const std::string id = std::to_string(process.exposures + 1);
    for (const auto& [phase, time] : {std::pair('b', slice.beginNs), {'e', slice.endNs}}) {
        begin(name, phase, process, kExposures, time).member("cat", name).member("id", id).key("args").beginObject();
        if (phase == 'b') describe(mJson, outcome, process.exposures);
        add(process, time, false, {whole.beginNs, whole.endNs, end()});
    }
}

void Trace::addExposure(Process& process, const ExposureOutcome& outcome) {
    if (outcome.span) {
        const Slice span{outcome.span->firstNs, outcome.span->lastNs};
        addSlice(process, "span", span, span, outcome);
    }
    const auto times = timesOf(outcome);
    if (!times) return;
    const Slice whole{times->exposed, times->finished};
    addSlice(process, "exposure", {times->exposed, times->read}, whole, outcome);
    addSlice(process, "readout", {times->read, times->finished}, whole, outcome);
    if (!isUnserved(outcome)) return;
    begin("no position", 'i', process, kExposures, times->exposed).member("s", "t").key("args").beginObject();
    describe(mJson, outcome, process.exposures);
    add(process, times->exposed, false, {whole.beginNs, whole.endNs, end()});
}

void Trace::add(Process& process, std::int64_t timeNs, bool isSample, Event event) {
    process.waiting.emplace(Order{timeNs, !isSample, mMade++}, std::move(event));
    if (process.waiting.size() > kWaiting) writeFirst(process);
}

void Trace::writeFirst(Process& process) {
    const auto first = process.waiting.begin();
    const bool isSample = !std::get<bool>(first->first);
    const Event event = std::move(first->second);
    process.waiting.erase(first);
    if (event.text.empty() || !mLimits.touches(mExtent.ms(event.beginNs), mExtent.ms(event.endNs))) return;
    if (isSample) {
        // Samples that were handed over again.
        if (event.text == process.lastSample) return;
        process.lastSample = event.text;
    }
    write(event.text);
}

void Trace::write(const std::string& text) {
    mOut << (mFirst ? "\n" : ",\n") << text;
    mFirst = false;
}

}  // namespace replay
