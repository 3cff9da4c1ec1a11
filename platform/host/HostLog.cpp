// Both logs of the platform. Whatever reaches one of them goes to the caller's sink.
#include <string.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/AndroidLog.h"
#include "platform/ULogger.h"
#include "platform/host/Guarded.h"
#include "platform/host/Host.h"
#include "platform/host/HostState.h"

using NSCam::Utils::ULog::ULogger;

namespace host {
namespace {

// The lock is held while the sink runs: that is what delivers entries one at a time. A sink must therefore not log.
internal::Guarded<LogSink>& logSink() {
    return internal::processWide<internal::Guarded<LogSink>>();
}

// True while there is a sink; spares the making of entries that nobody gets.
constinit std::atomic<bool> gSinkSet{false};

// Relaxed: the flag publishes nothing, the sink itself is fetched under its lock.
bool hasSink() {
    return gSinkSet.load(std::memory_order_relaxed);
}

void deliver(const LogEntry& entry) {
    const auto sink = logSink().lock();
    if (*sink) (*sink)(entry);
}

std::string textOrEmpty(const char* text) {
    return text ? text : "";
}

// At most `length` bytes, less when the text ends before.
std::string boundedText(const char* text, std::int32_t length) {
    if (!text || length <= 0) return {};
    // Cast: positive here, and every positive std::int32_t fits.
    return {text, ::strnlen(text, static_cast<std::size_t>(length))};
}

// The whole formatted text. False when the format cannot be printed.
[[gnu::format(printf, 1, 0)]] bool formatText(const char* format, std::va_list arguments, std::string& text) {
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) return false;
    // Cast: not negative here. A string has room for the zero that vsnprintf puts behind the text.
    text.resize(static_cast<std::size_t>(length));
    return std::vsnprintf(text.data(), text.size() + 1, format, arguments) == length;
}

[[gnu::format(printf, 3, 0)]] int androidLog(int priority, const char* tag, const char* format,
                                             std::va_list arguments) {
    LogEntry entry{LogEntry::Output::kAndroid, priority, 0, textOrEmpty(tag), {}, 0};
    if (!formatText(format, arguments, entry.text)) return -1;
    deliver(entry);
    // Cast: the length came from vsnprintf as an int.
    return static_cast<int>(entry.text.size());
}

class HostLogger final : public ULogger {
public:
    void write(std::uint32_t module, const char* tag, std::uint32_t level, const char* text,
               std::int32_t length) override {
        internal::enter(Operation::kULogWrite);
        if (!hasSink()) return;
        // Cast: levels are small numbers; the entry keeps both outputs' ranks in one field.
        deliver({LogEntry::Output::kUnified, static_cast<int>(level), module, textOrEmpty(tag),
                 boundedText(text, length), length});
    }

    void onAssert(std::int32_t value) override {
        internal::enter(Operation::kULogAssert);
        if (hasSink()) deliver({LogEntry::Output::kUnifiedAssert, value, 0, {}, {}, 0});
    }
};

constinit HostLogger gLogger;

}  // namespace

void setLogSink(LogSink sink) {
    // The old sink leaves with the parameter, after the lock: what its destruction runs is the caller's code.
    const auto current = logSink().lock();
    // Relaxed: see hasSink().
    gSinkSet.store(sink != nullptr, std::memory_order_relaxed);
    current->swap(sink);
}

void setLogSwitches(std::int32_t mode, std::uint32_t detailsLevel, std::uint32_t detailsMask) {
    // Atomic, since readers load the switches without a lock; relaxed, since each switch stands alone.
    __atomic_store_n(&ULogger::sMode, mode, __ATOMIC_RELAXED);
    __atomic_store_n(&ULogger::sDetailsLevel, detailsLevel, __ATOMIC_RELAXED);
    __atomic_store_n(&ULogger::sNormalDetailsMask, detailsMask, __ATOMIC_RELAXED);
}

void internal::resetLog() {
    setLogSink(nullptr);
    setLogSwitches(0, 0, 0);
    // Callers may take the logger away to play a platform that has not set it up. Relaxed: the object is constant.
    __atomic_store_n(&ULogger::sULogger, static_cast<ULogger*>(&gLogger), __ATOMIC_RELAXED);
}

}  // namespace host

// Constant-initialised: code that logs during static initialisation finds them set.
constinit std::int32_t ULogger::sMode = 0;
constinit std::uint32_t ULogger::sDetailsLevel = 0;
constinit std::uint32_t ULogger::sNormalDetailsMask = 0;
constinit ULogger* ULogger::sULogger = &host::gLogger;

int __android_log_print(int priority, const char* tag, const char* format, ...) noexcept {
    if (!host::hasSink()) return 0;
    std::va_list arguments;
    va_start(arguments, format);
    int result = -1;
    try {
        result = host::androidLog(priority, tag, format, arguments);
    } catch (...) {
        // The log promises not to throw; an entry that cannot be delivered is lost.
    }
    va_end(arguments);
    return result;
}
