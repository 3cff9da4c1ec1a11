// The library as a session meets it: its customer object, the settings that the object was made with, and the log
// gates. One thread.
#pragma once

#include <cstdint>
#include <optional>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "platform/host/Host.h"

namespace replay {

// The unified logger's three switches.
struct LogSwitches {
    std::int32_t mode = 0;
    std::uint32_t detailsLevel = 0;
    std::uint32_t detailsMask = 0;
};

class Library {
public:
    // To be called before each call into the library, while the object may not have been made yet.
    void noteSettings();
    // Makes the customer object compute in this mode, whatever the session sets. Without effect on one that exists.
    void overrideCalculationMode(std::int32_t mode) { mModeOverride = mode; }

    // The customer object, which is created when no call has done so yet. Throws std::bad_alloc without memory for it.
    TarvoShadingCustomUtil& customer();

    // The calculation mode that the customer object was created with; nothing when it is older than this session.
    std::optional<std::int32_t> calculationMode() const { return mCalculationMode; }

    void setLogSwitches(const LogSwitches& switches);
    const LogSwitches& logSwitches() const { return mSwitches; }

    // What the session makes the platform fail in, during its calls alone.
    host::Failures& failures() { return mFailures; }
    bool failing() const { return mFailures.any(); }

private:
    LogSwitches mSwitches;
    host::Failures mFailures;
    bool mCustomerSeen = false;
    std::optional<std::int32_t> mCalculationMode;
    std::optional<std::int32_t> mModeOverride;
};

// Closes the log gates for its own life and puts them back as they were.
class ClosedLogGates {
public:
    explicit ClosedLogGates(Library& library);
    ~ClosedLogGates();
    ClosedLogGates(const ClosedLogGates&) = delete;
    ClosedLogGates& operator=(const ClosedLogGates&) = delete;

private:
    Library& mLibrary;
    const LogSwitches mBefore;
};

}  // namespace replay
