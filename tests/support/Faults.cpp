#include "tests/support/Faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

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

Pause::Pause() : mWasActive(std::exchange(tArmed.active, false)) {}

Pause::~Pause() {
    tArmed.active = mWasActive;
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

// The steps of opening a file, as the C library's headers name them, and the steps of a stream behind it.
namespace {

// The next definition of `name`; found anew each time, since files are opened seldom.
template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool fails(int error) noexcept {
    if (!strikes(test::Fault::kFile)) return false;
    errno = error;
    return true;
}

// A stream's cookie is its descriptor.
int descriptorOf(void* cookie) noexcept {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(cookie));
}
int truncate(int descriptor, off_t size) noexcept {
    return next<int (*)(int, off_t)>("ftruncate")(descriptor, size);
}
ssize_t writeStream(void* cookie, const char* data, std::size_t size) noexcept {
    if (fails(ENOSPC)) return 0;  // an error, for a stream of this kind
    const ssize_t written = write(descriptorOf(cookie), data, size);
    return written < 0 ? 0 : written;
}
// A disk that fails at the end has lost what it had not written yet.
int closeStream(void* cookie) noexcept {
    const bool failed = fails(EIO);
    if (failed && lseek(descriptorOf(cookie), 0, SEEK_END) > 1) truncate(descriptorOf(cookie), 1);
    return close(descriptorOf(cookie)) != 0 || failed ? EOF : 0;
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails(EMFILE) ? -1 : next<int (*)(const char*, int, ...)>("open")(path, flags, mode);
}

[[gnu::visibility("default")]] int ftruncate(int descriptor, off_t size) noexcept {
    return fails(EIO) ? -1 : truncate(descriptor, size);
}

// With a small buffer, so that a file takes many writes.
[[gnu::visibility("default")]] std::FILE* fdopen(int descriptor, const char* mode) noexcept {
    constexpr std::size_t kBuffer = 200;
    if (fails(EMFILE)) return nullptr;
    if (!tArmed.active) return next<std::FILE* (*)(int, const char*)>("fdopen")(descriptor, mode);
    std::FILE* const stream = fopencookie(reinterpret_cast<void*>(std::intptr_t{descriptor}), mode,
                                          {nullptr, writeStream, nullptr, closeStream});
    if (stream != nullptr) std::setvbuf(stream, nullptr, _IOFBF, kBuffer);
    return stream;
}
}
