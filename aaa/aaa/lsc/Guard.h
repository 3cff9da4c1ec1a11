// What happens to an exception: none leaves the library.
//
// An exported function that calls something that may throw is a function try block, whose handler returns the neutral
// result. The handler is outside the body, so locks are released and locals destroyed before it runs.
#pragma once

namespace lsc {

// Runs an operation whose failure changes nothing for the caller. Returns whether it completed without throwing.
template <typename Operation>
bool quietly(const Operation& operation) noexcept try {
    operation();
    return true;
} catch (...) {
    return false;
}

}  // namespace lsc
