// A session as trace events in JSON, for the trace viewers of browsers and of mobile systems; written while the session
// is played. docs/workbench.md says what stands in the trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>

#include "tools/diagnose/Observer.h"
#include "tools/diagnose/Outcome.h"
#include "tools/report/Extent.h"
#include "tools/session/JsonWriter.h"

namespace replay {

// A process for each sensor. Its events are in order of time, except for an exposure that is asked for more than
// kWaiting events late. Times are the session's own, in us with three decimals: every nanosecond survives.
class Trace : public Observer {
public:
    static constexpr std::size_t kWaiting = 32768;  // events of a sensor that wait for earlier ones: 30 s at 1 kHz

    // Begins the trace; `out` must outlive the object. `name` is the session's. Outside the limits, nothing is written;
    // slices that reach into them are written whole.
    Trace(std::ostream& out, std::string name, const TimeLimits& limits);

    void handedOver(const HandOver& handOver) override;
    void exposuresAsked(const std::vector<ExposureOutcome>& outcomes) override;

    // Writes what waits, and the end. To be called once, after the session.
    void finish();

private:
    // Threads of a sensor's process.
    enum Track : int { kHall = 1, kExposures = 2, kBatches = 3 };
    // Samples before other events of the same time, those in the order in which they were made.
    using Order = std::tuple<std::int64_t, bool, std::uint64_t>;

    struct Event {
        std::int64_t beginNs;  // of what it belongs to
        std::int64_t endNs;
        std::string text;
    };
    struct Process {
        int id = 0;
        std::size_t exposures = 0;
        std::map<Order, Event> waiting;
        std::string lastSample;  // that was written
    };
    struct Slice {
        std::int64_t beginNs;
        std::int64_t endNs;
    };

    Process& process(std::int32_t sensor);
    void name(std::string_view kind, const Process& process, int track, std::string_view text);
    JsonWriter& begin(std::string_view name, char phase, const Process& process, Track track);
    JsonWriter& begin(std::string_view name, char phase, const Process& process, Track track, std::int64_t timeNs);
    std::string end();
    std::string counter(std::string_view name, const Process& process, std::int64_t timeNs, std::string_view axis,
                        float value);
    void addSlice(Process& process, const char* name, const Slice& slice, const Slice& whole,
                  const ExposureOutcome& outcome);
    void addExposure(Process& process, const ExposureOutcome& outcome);
    void add(Process& process, std::int64_t timeNs, bool isSample, Event event);
    void writeFirst(Process& process);
    void write(const std::string& text);

    std::ostream& mOut;
    const std::string mName;
    const TimeLimits mLimits;
    Extent mExtent;
    JsonWriter mJson;
    std::uint64_t mMade = 0;
    bool mFirst = true;
    std::map<std::int32_t, Process> mProcesses;
};

}  // namespace replay
