// Draws numbers from a fuzzer's bytes; zeros when they run out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : mData(data), mLeft(size) {}

    bool empty() const { return mLeft == 0; }

    template <typename T>
    T take() {
        T value = {};
        const std::size_t count = mLeft < sizeof value ? mLeft : sizeof value;
        std::memcpy(&value, mData, count);
        mData += count;
        mLeft -= count;
        return value;
    }

    // A number below `bound`, one byte of input.
    unsigned int below(unsigned int bound) { return take<std::uint8_t>() % bound; }

    // A time stamp: near the last one, near an end of the ranges, or anything.
    std::int64_t time(std::int64_t last) {
        constexpr std::int64_t kEnds[] = {0, std::numeric_limits<std::int64_t>::max(),
                                          std::numeric_limits<std::int64_t>::min()};
        const unsigned int kind = below(16);
        const auto step = take<std::int8_t>();
        if (kind == 15) return take<std::int64_t>();
        return wrappingSum(kind < 12 ? last : kEnds[kind - 12], step);
    }

private:
    static std::int64_t wrappingSum(std::int64_t a, std::int64_t b) {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
    }

    const std::uint8_t* mData;
    std::size_t mLeft;
};

// Ends the run, so that the engine keeps the input.
inline void require(bool holds) {
    if (!holds) __builtin_trap();
}

}  // namespace fuzz
