// Records what the library logs, in one comparable line an entry.
#pragma once

#include <string>
#include <vector>

#include "platform/host/Host.h"

namespace test {

// Log switches that let every message through to the Android log, or to both outputs.
inline constexpr std::uint32_t kAllDetails = 5;
inline constexpr std::uint32_t kAllModules = 0x821000;

// From construction to destruction every entry is kept. An entry reads "android 6 TAG: text", "ulog 1 TAG: text" or
// "ulog_assert 1"; the line number and path at the end of an error become "{#LINE:UNIT}".
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // What came since the last call.
    std::vector<std::string> take();

private:
    std::vector<std::string> mLines;
};

std::string describe(const host::LogEntry& entry);

}  // namespace test
