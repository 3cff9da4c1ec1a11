// The one place that says what happens to an exception: none leaves the library.
//
// An exported function carries the guard on its signature, outside its body, so that locks are released and locals gone
// when the neutral result is returned:
//
//     bool f() noexcept try {
//         ...
//     }
//     LSC_OTHERWISE_RETURN(false)
#pragma once

// The neutral result of a guarded function; without an argument, of one that returns nothing.
#define LSC_OTHERWISE_RETURN(...) \
    catch (...) {                 \
        return __VA_ARGS__;       \
    }

namespace lsc {

// Runs an operation whose failure changes nothing for the caller.
template <typename Operation>
void quietly(const Operation& operation) noexcept try {
    operation();
}
LSC_OTHERWISE_RETURN()

}  // namespace lsc
