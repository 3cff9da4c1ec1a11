// Building blocks of the log macros: the platform's switches, read again at every test, and the types of printf's
// arguments.
#pragma once

#include <cstdint>

#include "platform/ULogger.h"

namespace lsc::log {

inline constexpr std::int32_t kAndroidOutput = 0x1;  // bit of ULogger::sMode
inline constexpr std::int32_t kUnifiedOutput = 0xA;  // either bit of ULogger::sMode
inline constexpr std::uint32_t kDebugDetailsLevel = 5;
inline constexpr std::uint32_t kModuleDetailsBit = 0x800000;  // needed in ULogger::sNormalDetailsMask
inline constexpr std::uint32_t kDebugDetailsBits = 0x21000;   // and one of these

// Relaxed: the platform writes its switches at any time without a lock, and no other data depends on their value.
template <typename T>
T load(const T& platformSwitch) noexcept {
    return __atomic_load_n(&platformSwitch, __ATOMIC_RELAXED);
}

inline bool outputOn(std::int32_t outputs) noexcept {
    return (load(NSCam::Utils::ULog::ULogger::sMode) & outputs) != 0;
}

inline bool errorOn() noexcept {
    return outputOn(kAndroidOutput | kUnifiedOutput);
}

inline bool debugOn() noexcept {
    using NSCam::Utils::ULog::ULogger;
    return load(ULogger::sDetailsLevel) >= kDebugDetailsLevel &&
           (load(ULogger::sNormalDetailsMask) & kModuleDetailsBit) != 0 &&
           (load(ULogger::sNormalDetailsMask) & kDebugDetailsBits) != 0 && errorOn();
}

// Arguments of the conversions %d, %llu, %lld and %f, which differ in type from the fixed-width numbers, from
// enumerations and from float. %d shows the bits of an unsigned number as a signed one.
template <typename T>
constexpr int dec(T value) noexcept {
    static_assert(sizeof value <= sizeof(int));
    return static_cast<int>(value);
}
constexpr unsigned long long llu(std::uint64_t value) noexcept {
    return value;
}
constexpr unsigned long long llu(std::int64_t value) noexcept {
    return static_cast<unsigned long long>(value);
}
constexpr long long lld(std::int64_t value) noexcept {
    return value;
}
constexpr long long lld(std::uint64_t value) noexcept {
    return static_cast<long long>(value);
}
constexpr double wide(float value) noexcept {
    return static_cast<double>(value);
}

}  // namespace lsc::log
