// The logging convention of every unit: messages go to the Android log, to the platform's unified logger, to both or to
// neither, depending on the platform's switches at that moment. A unit defines LSC_LOG_TAG before it includes this
// header.
//
// LSC_LOG_ERROR(format, ...)              errors: whenever an output is on
// LSC_LOG_DEBUG(format, ...)              debug messages: the platform's detail switches must allow them as well
// LSC_LOG_DEBUG_IF(gate, format, ...)     debug messages that also need `gate`, which is tested first
// LSC_LOG_ERROR_AS(function, format, ...) and LSC_LOG_DEBUG_AS(function, format, ...)
//                                         messages that a helper issues on behalf of another function
// LSC_LOG_ASSERT(format, ...)             a broken expectation: always reaches the Android log, never ends the process
//
// A message text begins with "[function] ". `format` is a string literal in printf's language, checked by the compiler;
// arguments are evaluated once, and only when the message is emitted. Safe on any thread; never throws. A suppressed
// message formats and allocates nothing. Arguments of %d, %llu, %lld and %f go through the helpers of
// ShadingLogGates.h.
#pragma once

#include <cstdint>

#include "aaa/aaa/lsc/ShadingLogGates.h"
#include "platform/AndroidLog.h"

namespace lsc::log {

inline constexpr std::uint32_t kUnifiedLevelError = 1;
inline constexpr std::uint32_t kUnifiedLevelDebug = 5;

// Where a message comes from.
struct Site {
    const char* tag;
    const char* function;  // unqualified
    int line;
    const char* file;
};

// Formats into a buffer of its own and hands at most 1023 characters to the unified logger. Without memory, or when the
// text cannot be formatted, the entry is dropped.
[[gnu::format(printf, 3, 4)]] void writeUnified(const char* tag, std::uint32_t level, const char* format, ...) noexcept;

// The unified logger's follow-up of an assertion entry.
void assertUnified() noexcept;

// Declared for the compiler's check of formats; never defined or called.
[[gnu::format(printf, 1, 2)]] int checkFormat(const char* format, ...) noexcept;

// The two outputs get formats of their own: only the Android output of errors ends in function, line and file. The
// macros below check the formats, which the compiler cannot follow into these templates.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <typename... Args>
void error(const Site& site, const char* formatWithSite, const char* format, Args... args) noexcept {
    if (outputOn(kAndroidOutput)) {
        __android_log_print(kAndroidLogError, site.tag, formatWithSite, site.function, args..., site.function,
                            site.line, site.file);
    }
    if (outputOn(kUnifiedOutput)) writeUnified(site.tag, kUnifiedLevelError, format, site.function, args...);
}

template <typename... Args>
void debug(const Site& site, const char* format, Args... args) noexcept {
    if (outputOn(kAndroidOutput)) __android_log_print(kAndroidLogDebug, site.tag, format, site.function, args...);
    if (outputOn(kUnifiedOutput)) writeUnified(site.tag, kUnifiedLevelDebug, format, site.function, args...);
}

template <typename... Args>
void assertion(const Site& site, const char* formatWithSite, const char* format, Args... args) noexcept {
    if (outputOn(kUnifiedOutput)) {
        writeUnified(site.tag, kUnifiedLevelError, format, site.function, args...);
        assertUnified();
    }
    // Printed, not asserted: the platform's assertion call would end the camera service.
    __android_log_print(kAndroidLogFatal, site.tag, formatWithSite, site.function, args..., site.function, site.line,
                        site.file);
}
#pragma GCC diagnostic pop

}  // namespace lsc::log

#define LSC_LOG_SITE_(function)                   \
    ::lsc::log::Site {                            \
        LSC_LOG_TAG, function, __LINE__, __FILE__ \
    }

// The dots stand for a message: its format, then its arguments. With its site it becomes the format of the Android
// output of errors, followed by the format of all other outputs and the arguments.
#define LSC_LOG_FORMAT_OF_(format, ...) format
#define LSC_LOG_WITH_SITE_(...) "[%s] " LSC_LOG_FORMAT_OF_(__VA_ARGS__, ) " (%s){#%d:%s}", "[%s] " __VA_ARGS__

// Never evaluated: lets the compiler check the arguments against the format.
#define LSC_LOG_CHECK_(...) static_cast<void>(sizeof(::lsc::log::checkFormat(__VA_ARGS__)))

#define LSC_LOG_ERROR_AS(function, ...)                                                  \
    do {                                                                                 \
        if (::lsc::log::errorOn()) {                                                     \
            ::lsc::log::error(LSC_LOG_SITE_(function), LSC_LOG_WITH_SITE_(__VA_ARGS__)); \
            LSC_LOG_CHECK_(__VA_ARGS__);                                                 \
        }                                                                                \
    } while (false)

#define LSC_LOG_DEBUG_AS(function, ...)                                      \
    do {                                                                     \
        if (::lsc::log::debugOn()) {                                         \
            ::lsc::log::debug(LSC_LOG_SITE_(function), "[%s] " __VA_ARGS__); \
            LSC_LOG_CHECK_(__VA_ARGS__);                                     \
        }                                                                    \
    } while (false)

#define LSC_LOG_ASSERT(...)                                                              \
    do {                                                                                 \
        ::lsc::log::assertion(LSC_LOG_SITE_(__func__), LSC_LOG_WITH_SITE_(__VA_ARGS__)); \
        LSC_LOG_CHECK_(__VA_ARGS__);                                                     \
    } while (false)

#define LSC_LOG_ERROR(...) LSC_LOG_ERROR_AS(__func__, __VA_ARGS__)
#define LSC_LOG_DEBUG(...) LSC_LOG_DEBUG_AS(__func__, __VA_ARGS__)
#define LSC_LOG_DEBUG_IF(gate, ...)           \
    do {                                      \
        if (gate) LSC_LOG_DEBUG(__VA_ARGS__); \
    } while (false)
