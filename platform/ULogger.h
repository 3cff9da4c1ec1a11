// The camera platform's unified logger: process-wide switches and one logger object.
#pragma once

#include <cstdint>

namespace NSCam::Utils::ULog {

// Messages are written under the library's locks, so no operation may call the library nor wait for a thread that does.
//
// The switches are owned and written by the platform, at any time and from any thread, without a lock; a reader takes
// each one afresh and must not expect two of them to change together.
class ULogger {
public:
    // Bit 0: the Android output is on. Bits 1 and 3: the unified-logger output is on. Any combination is legal.
    static std::int32_t sMode;
    // Verbosity of the detail messages; debug messages need at least 5.
    static std::uint32_t sDetailsLevel;
    // Per-module switches of the detail messages.
    static std::uint32_t sNormalDetailsMask;
    // The logger object; null before the platform has set the logger up. It outlives every caller once set.
    static ULogger* sULogger;

    // Writes one entry. `text` is zero-terminated, lives for the call, and `length` is its length in bytes.
    // Thread safe. May throw; an entry that could not be written is lost.
    virtual void write(std::uint32_t module, const char* tag, std::uint32_t level, const char* text,
                       std::int32_t length) = 0;

    // Follow-up of an assertion entry; called with 1 after the entry was written. Does not end the process.
    // Thread safe. May throw.
    virtual void onAssert(std::int32_t value) = 0;

protected:
    ULogger() = default;
    ULogger(const ULogger&) = default;
    ULogger& operator=(const ULogger&) = default;
    ~ULogger() = default;  // nobody destroys the logger through this interface
};

}  // namespace NSCam::Utils::ULog
