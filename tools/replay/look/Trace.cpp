#include "tools/replay/look/Trace.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "tools/replay/JsonText.h"

namespace replay {
namespace {

// Threads of a sensor's process.
enum Track : int { kHall = 1, kExposures = 2, kBatches = 3 };

// An event that refers to what the recording holds; its text is made when it is written.
struct Event {
    enum Kind { kExposureBegin, kExposureEnd, kReadoutBegin, kReadoutEnd, kSpanBegin, kSpanEnd, kMissed, kBatch };
    std::int64_t timeNs;
    Kind kind;
    std::size_t index;  // of the exposure or the batch
};

void appendMicroseconds(std::string& out, std::int64_t ns) {
    if (ns < 0) out += '-';
    const std::uint64_t size =
        ns < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(ns) : static_cast<std::uint64_t>(ns);
    const std::string rest = std::to_string(size % 1000);
    out.append(std::to_string(size / 1000)).append(".").append(3 - rest.size(), '0').append(rest);
}

class Writer {
public:
    explicit Writer(std::ostream& out) : mOut(out) { mOut << "{\"displayTimeUnit\":\"ns\",\"traceEvents\":["; }
    ~Writer() { mOut << "\n]}\n"; }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // An event; the fields are the text of further members, `args` that of the members of "args".
    void event(std::string_view name, char phase, int process, int thread, std::string_view fields,
               std::string_view args) {
        mText = mFirst ? "\n{\"name\":" : ",\n{\"name\":";
        mFirst = false;
        appendString(mText, name);
        mText.append(",\"ph\":\"").append(1, phase).append("\",\"pid\":").append(std::to_string(process));
        mText.append(",\"tid\":").append(std::to_string(thread)).append(fields);
        mText.append(",\"args\":{").append(args).append("}}");
        mOut << mText;
    }

private:
    std::ostream& mOut;
    std::string mText;
    bool mFirst = true;
};

std::string atTime(std::int64_t ns) {
    std::string text = ",\"ts\":";
    appendMicroseconds(text, ns);
    return text;
}

// Members of a JSON object.
class Members {
public:
    template <typename T>
    Members& add(std::string_view key, const T& value) {
        if (!mText.empty()) mText += ',';
        mText.append(1, '"').append(key).append("\":");
        if constexpr (std::is_convertible_v<T, std::string_view>) {
            appendString(mText, value);
        } else {
            appendNumber(mText, value);
        }
        return *this;
    }
    const std::string& text() const { return mText; }

private:
    std::string mText;
};

// What is known of an exposure.
std::string describe(const ExposureOutcome& outcome, std::size_t index) {
    Members members;
    members.add("index", index);
    if (outcome.type) members.add("type", *outcome.type);
    if (outcome.position) members.add("x", outcome.position->x).add("y", outcome.position->y);
    if (outcome.span) members.add("samples", outcome.span->samples).add("match_us", outcome.span->distanceUs);
    if (outcome.reason) members.add("reason", outcome.reason->text);
    return members.text();
}

class SensorTrace {
public:
    SensorTrace(Writer& out, int process, const SensorRecording& sensor)
        : mOut(out), mProcess(process), mSensor(sensor) {}

    void writeNames(std::int32_t id, const std::string& session) {
        mOut.event("process_name", 'M', mProcess, 0, "",
                   Members().add("name", "sensor " + std::to_string(id) + " of " + session).text());
        for (const auto& [track, name] : {std::pair(kHall, "hall"), {kExposures, "exposures"}, {kBatches, "batches"}})
            mOut.event("thread_name", 'M', mProcess, track, "", Members().add("name", name).text());
    }

    // Merges samples and events, both in order of time.
    void write() {
        const std::vector<Event> events = inOrder();
        auto event = events.begin();
        for (const RecordedSample& sample : mSensor.samples) {
            for (; event != events.end() && event->timeNs < sample.timeNs; ++event)
                write(*event);
            write(sample);
        }
        for (; event != events.end(); ++event)
            write(*event);
    }

private:
    std::vector<Event> inOrder() const {
        std::vector<Event> events;
        for (std::size_t i = 0; i < mSensor.exposures.size(); ++i)
            addExposure(events, i);
        for (std::size_t i = 0; i < mSensor.events.size(); ++i)
            events.push_back({mSensor.events[i].timeNs, Event::kBatch, i});
        // Stable: a slice without a length keeps its begin before its end.
        std::ranges::stable_sort(events, {}, &Event::timeNs);
        return events;
    }

    void addExposure(std::vector<Event>& events, std::size_t i) const {
        const ExposureOutcome& outcome = mSensor.exposures[i];
        if (const auto times = timesOf(outcome)) {
            events.push_back({times->exposed, Event::kExposureBegin, i});
            events.push_back({times->read, Event::kExposureEnd, i});
            events.push_back({times->read, Event::kReadoutBegin, i});
            events.push_back({times->finished, Event::kReadoutEnd, i});
            if (isUnserved(outcome)) events.push_back({times->exposed, Event::kMissed, i});
        }
        if (outcome.span) {
            events.push_back({outcome.span->firstNs, Event::kSpanBegin, i});
            events.push_back({outcome.span->lastNs, Event::kSpanEnd, i});
        }
    }

    void write(const RecordedSample& sample) {
        const std::string time = atTime(sample.timeNs);
        if (std::isfinite(sample.x))
            mOut.event("hall x", 'C', mProcess, kHall, time, Members().add("x", sample.x).text());
        if (std::isfinite(sample.y))
            mOut.event("hall y", 'C', mProcess, kHall, time, Members().add("y", sample.y).text());
    }

    void write(const Event& event) {
        switch (event.kind) {
            case Event::kExposureBegin:
                return slice("exposure", 'b', event);
            case Event::kExposureEnd:
                return slice("exposure", 'e', event);
            case Event::kReadoutBegin:
                return slice("readout", 'b', event);
            case Event::kReadoutEnd:
                return slice("readout", 'e', event);
            case Event::kSpanBegin:
                return slice("span", 'b', event);
            case Event::kSpanEnd:
                return slice("span", 'e', event);
            case Event::kMissed:
                return instant("no position", kExposures, event, describe(mSensor.exposures[event.index], event.index));
            case Event::kBatch:
                return batch(event);
        }
    }

    // An id for each slice: a viewer pairs what shares category, id and process.
    void slice(const char* name, char phase, const Event& event) {
        std::string fields = atTime(event.timeNs);
        fields.append(1, ',').append(Members().add("cat", name).add("id", std::to_string(event.index + 1)).text());
        mOut.event(name, phase, mProcess, kExposures, fields,
                   phase == 'b' ? describe(mSensor.exposures[event.index], event.index) : "");
    }

    void instant(const char* name, Track track, const Event& event, const std::string& args) {
        mOut.event(name, 'i', mProcess, track, atTime(event.timeNs) + ",\"s\":\"t\"", args);
    }

    void batch(const Event& event) {
        const RecordedEvent& batch = mSensor.events[event.index];
        instant(batch.fate == TakenBatch::Fate::kSplit ? "split" : "drop", kBatches, event,
                Members().add("frame", batch.frame).add("samples", batch.samples).text());
    }

    Writer& mOut;
    const int mProcess;
    const SensorRecording& mSensor;
};

}  // namespace

void writeTrace(std::ostream& out, const Recording& recording, const std::string& name) {
    Writer writer(out);
    int process = 0;
    for (const auto& [id, sensor] : recording.sensors()) {
        SensorTrace trace(writer, ++process, sensor);
        trace.writeNames(id, name);
        trace.write();
    }
}

}  // namespace replay
