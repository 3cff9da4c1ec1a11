// Runs through every tuple of a few values.
#pragma once

#include <cstddef>
#include <vector>

namespace test {

// Elements of the longest tuples; an emulator gets shorter ones.
#ifdef LSC_EMULATED
inline constexpr int kFew = 3;
#else
inline constexpr int kFew = 5;
#endif

// Calls `set(place, value)` for each place that changes, values from 0 to `values` - 1, and `visit()` for each tuple of
// `count` of them.
template <typename Set, typename Visit>
void forEveryTuple(int count, std::size_t values, const Set& set, const Visit& visit) {
    std::vector<std::size_t> tuple(static_cast<std::size_t>(count));
    for (int place = 0; place < count; ++place)
        set(place, 0);
    for (;;) {
        visit();
        int place = count - 1;
        for (; place >= 0; --place) {
            std::size_t& value = tuple[static_cast<std::size_t>(place)];
            value = value + 1 == values ? 0 : value + 1;
            set(place, value);
            if (value != 0) break;
        }
        if (place < 0) return;
    }
}

}  // namespace test
