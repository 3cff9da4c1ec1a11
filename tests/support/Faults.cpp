#include "tests/support/Faults.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "platform/host/Host.h"

namespace {

struct Armed {
    bool active = false;
    test::Fault fault = test::Fault::kAllocation;
    std::size_t at = 0;
    test::Repeat repeat = test::Repeat::kOnce;
    std::size_t seen = 0;
    bool struck = false;
};
thread_local Armed tArmed;
thread_local std::size_t tAllocations = 0;

bool strikes(test::Fault fault) noexcept {
    if (!tArmed.active || tArmed.fault != fault) return false;
    const std::size_t n = tArmed.seen++;
    const bool hit = tArmed.repeat == test::Repeat::kOnce ? n == tArmed.at : n >= tArmed.at;
    tArmed.struck = tArmed.struck || hit;
    return hit;
}

void* allocate(std::size_t size) noexcept {
    ++tAllocations;
    return strikes(test::Fault::kAllocation) ? nullptr : std::malloc(size != 0 ? size : 1);
}

}  // namespace

namespace test {

FaultAt::FaultAt(Fault fault, std::size_t n, Repeat repeat) {
    if (fault == Fault::kPlatform) {
        host::setHook([](host::Operation) {
            if (strikes(Fault::kPlatform)) throw std::runtime_error("platform");
        });
    }
    tArmed = {true, fault, n, repeat, 0, false};
}

FaultAt::~FaultAt() {
    tArmed.active = false;
    host::setHook(nullptr);
}

bool FaultAt::struck() const {
    return tArmed.struck;
}

std::size_t allocationCount() {
    return tAllocations;
}

}  // namespace test

void* operator new(std::size_t size) {
    if (void* const memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

#if !defined(__SANITIZE_THREAD__)
extern "C" [[gnu::visibility("default")]] int pthread_mutex_lock(pthread_mutex_t* mutex) {
    using Lock = int (*)(pthread_mutex_t*);
    // Constant-initialised: the guard of an initialisation at run time takes a mutex, and so would come back here.
    static constinit std::atomic<Lock> sNext = nullptr;
    // Relaxed: every thread finds the same address.
    Lock next = sNext.load(std::memory_order_relaxed);
    if (next == nullptr) {
        next = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
        sNext.store(next, std::memory_order_relaxed);
    }
    return strikes(test::Fault::kLock) ? EAGAIN : next(mutex);
}
#endif
