// Reads a logcat capture line by line and gathers what it says of the library's calls. Pure: lines in, a Capture out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/replay/import/Capture.h"
#include "tools/replay/import/LogLine.h"

namespace replay::import {

class CaptureReader {
public:
    // Lines of the library from another process than `pid` are left out; without one, from another process than that
    // of the first.
    explicit CaptureReader(std::optional<std::uint32_t> pid);
    ~CaptureReader();

    // The next line, without its end.
    void add(std::string_view line);
    // What all lines said. No line may follow.
    Capture finish();

private:
    struct Thread;

    bool isOurs(const LogLine& line);
    void addChatty(const LogLine& line);
    void addMessage(const LogLine& line);
    Thread& threadOf(const LogLine& line);

    std::optional<std::uint32_t> mPid;
    Capture mCapture;
    std::map<std::uint32_t, std::unique_ptr<Thread>> mThreads;  // by thread id, or by process id in brief
    std::size_t mLine = 0;
};

}  // namespace replay::import
