// What the library makes of the samples around an exposure: its own code, asked again. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "customer/aaa/aaa/lsc/OisSpan.h"
#include "tools/import/Calls.h"

namespace replay::import {

struct Recalculation {
    std::optional<lsc::LensPosition> position;
    std::size_t span = 0;   // entries that the position is made from; not more than 1: no match
    std::size_t steps = 0;  // messages between the listing and the result
};
Recalculation recalculate(const Calculation& calculation, std::int32_t mode, const lsc::Samples& window);

// The samples that a calculation lists.
lsc::Samples windowOf(const std::vector<Listed>& listing);

// Whether a position that was printed is this one, to the sixth decimal.
bool isPrinted(const Exposure& exposure, const lsc::LensPosition& position);

}  // namespace replay::import
