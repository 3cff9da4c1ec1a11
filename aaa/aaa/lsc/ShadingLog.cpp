#include "aaa/aaa/lsc/ShadingLog.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

#include "aaa/aaa/lsc/Guard.h"

namespace lsc::log {
namespace {

using NSCam::Utils::ULog::ULogger;

constexpr std::uint32_t kModuleId = 0x821001;
constexpr std::size_t kBufferSize = 1024;  // bytes, the terminating zero included
constexpr std::int32_t kAssertValue = 1;

// Whatever the logger throws, a message never changes what its caller does.
template <typename Operation>
void withLogger(const Operation& operation) noexcept {
    quietly([&operation] {
        // Acquire: the object behind the pointer was made before the pointer was set.
        if (ULogger* const target = __atomic_load_n(&ULogger::sULogger, __ATOMIC_ACQUIRE)) operation(*target);
    });
}

}  // namespace

void writeUnified(const char* tag, std::uint32_t level, const char* format, ...) noexcept {
    // On the heap: callers may run on platform threads with small stacks.
    const std::unique_ptr<char[]> text(new (std::nothrow) char[kBufferSize]);
    if (!text) return;

    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.get(), kBufferSize, format, arguments);
    va_end(arguments);
    if (length < 0) return;

    text[kBufferSize - 1] = '\0';  // whatever the formatter did
    // A logger that reads by length must not read past a text that was cut.
    const int handedOver = std::min(length, static_cast<int>(kBufferSize) - 1);
    withLogger([&](ULogger& target) { target.write(kModuleId, tag, level, text.get(), handedOver); });
}

void assertUnified() noexcept {
    withLogger([](ULogger& target) { target.onAssert(kAssertValue); });
}

}  // namespace lsc::log
