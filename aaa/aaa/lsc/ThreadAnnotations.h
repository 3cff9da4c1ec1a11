// Lock rules that a compiler can check: Clang with an annotated standard library (libc++ built with
// _LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS) turns a breach into a diagnostic; elsewhere the macros are empty, because
// an unannotated std::mutex is no lock to Clang.
#pragma once

#if defined(__clang__) && defined(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
#define LSC_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define LSC_THREAD_ANNOTATION(x)
#endif

// The data may be touched only with the lock held.
#define LSC_GUARDED_BY(mutex) LSC_THREAD_ANNOTATION(guarded_by(mutex))
// The function may be called only with the lock held.
#define LSC_REQUIRES(mutex) LSC_THREAD_ANNOTATION(requires_capability(mutex))
// The function takes the lock itself, so its caller must not hold it.
#define LSC_EXCLUDES(mutex) LSC_THREAD_ANNOTATION(locks_excluded(mutex))
