// Makes what a function stands on fail: memory, locks, the platform, files. Replaces the program's operator new,
// pthread_mutex_lock and what opens a file; counts and fails only on the thread that armed it.
#pragma once

#include <cstddef>

namespace test {

enum class Fault {
    kAllocation,  // operator new: the throwing ones throw, the others give null
    kLock,        // std::mutex::lock throws
    kPlatform,    // an operation of the platform throws
    kFile,  // a file is not opened (too many of them), not emptied (disk error), not written (disk full) or closed
};
// The thread sanitizer must see every lock with its own eyes: there, none fails.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool kLocksFail = false;
#else
inline constexpr bool kLocksFail = true;
#endif
inline constexpr Fault kFaults[] = {Fault::kAllocation, Fault::kLock, Fault::kPlatform, Fault::kFile};

enum class Repeat { kOnce, kForever };

// While it lives, the n-th point (from 0) at which `fault` can strike fails, or all from there on do.
class FaultAt {
public:
    FaultAt(Fault fault, std::size_t n, Repeat repeat);
    ~FaultAt();
    FaultAt(const FaultAt&) = delete;
    FaultAt& operator=(const FaultAt&) = delete;

    // Whether anything failed.
    bool struck() const;
};

// While it lives, nothing fails nor counts on this thread.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

private:
    const bool mWasActive;
};

// Every operator new from now on fails, until destruction.
class NoMemory : public FaultAt {
public:
    NoMemory() : FaultAt(Fault::kAllocation, 0, Repeat::kForever) {}
};

// Allocations by operator new that this thread has made so far.
std::size_t allocationCount();

}  // namespace test
