// What lasts from line to line of a session: the metadata objects by name, the hook instances by index, the log
// switches, and the recording of what the library logs. One thread.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "platform/Metadata.h"
#include "tools/replay/LogRecorder.h"
#include "tools/replay/look/Cost.h"

namespace replay {

class FrameReport;

class Session {
public:
    // With `echo`, what the library logs is printed there too; with `report`, it hears of frames and samples. Both must
    // outlive the session.
    Session(std::ostream* echo, FrameReport* report) : mRecorder(echo), mReport(report) {}

    // Puts `metadata` in place of an earlier object of that name. Objects are kept for the whole session.
    void putMetadata(const std::string& name, std::unique_ptr<NSCam::IMetadata> metadata);
    // Null for a name that no line made.
    NSCam::IMetadata* findMetadata(const std::string& name) const;

    void putInstance(std::int32_t index, CustomShadingFlow* instance) { mInstances[index] = instance; }
    // Null for an index that has none.
    CustomShadingFlow* findInstance(std::int32_t index) const;

    void setLogSwitches(const LogSwitches& switches);
    const LogSwitches& logSwitches() const { return mSwitches; }

    // Runs a call into the library, records what it logs and gives its result. Nothing else may be inside.
    template <typename Call>
    auto inLibrary(Call&& call) {
        noteSettings();
        const Stopwatch watch(mCost);
        return mRecorder.record(std::forward<Call>(call));
    }
    std::vector<host::LogEntry> takeLog() { return mRecorder.take(); }

    // Where the time of the library calls goes from now on; null: nowhere.
    void timeCalls(Histogram* cost) { mCost = cost; }

    // The sensor's monitor, whether there is one now. What is there at the end can be ended, so that a replay of the
    // same session finds none.
    void noteMonitor(std::int32_t sensor, bool there);
    void endMonitors();

    // The customer object, which is created when no call has done so yet. Throws std::bad_alloc without memory for it.
    TarvoShadingCustomUtil& customer();

    // The calculation mode that the customer object was created with; nothing when it is older than this session.
    std::optional<std::int32_t> calculationMode() const { return mCalculationMode; }

    // Null when nobody wants to see the frames.
    FrameReport* report() const { return mReport; }

private:
    void noteSettings();

    std::map<std::string, std::unique_ptr<NSCam::IMetadata>> mMetadata;
    std::map<std::int32_t, CustomShadingFlow*> mInstances;
    LogSwitches mSwitches;
    LogRecorder mRecorder;
    FrameReport* const mReport;
    Histogram* mCost = nullptr;
    std::set<std::int32_t> mMonitors;
    bool mCustomerSeen = false;
    std::optional<std::int32_t> mCalculationMode;
};

}  // namespace replay
