// Sums and differences of times that wrap at 64 bits by intent. A device's build ends the process where unsigned
// arithmetic wraps; this is the only place where it may.
#pragma once

#include <cstdint>

#if defined(__clang__)
#define LSC_WRAPS __attribute__((no_sanitize("unsigned-integer-overflow")))
#else
#define LSC_WRAPS
#endif

namespace lsc {

LSC_WRAPS constexpr std::uint64_t wrappingSum(std::uint64_t a, std::uint64_t b) {
    return a + b;
}
LSC_WRAPS constexpr std::uint64_t wrappingDifference(std::uint64_t a, std::uint64_t b) {
    return a - b;
}

}  // namespace lsc
