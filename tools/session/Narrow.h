// Checked conversion of whole numbers.
#pragma once

#include <concepts>
#include <stdexcept>
#include <utility>

namespace replay {

// The number as a T. Throws std::range_error when T cannot hold it, which is a defect of the tool.
template <std::integral T, std::integral From>
constexpr T narrow(From number) {
    if (!std::in_range<T>(number)) throw std::range_error("a number that its type cannot hold");
    return static_cast<T>(number);  // in range, as tested
}

}  // namespace replay
