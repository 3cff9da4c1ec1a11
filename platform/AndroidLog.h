// The Android log, as the NDK declares it. Thread safe; never throws; returns after the line is handed over. Called
// under the library's locks: it must not call the library.
#pragma once

extern "C" {

// Priorities of this log that the library uses.
enum : int {
    kAndroidLogDebug = 3,
    kAndroidLogError = 6,
    kAndroidLogFatal = 7,  // a label only: printing at this priority does not end the process
};

// Formats printf-style and writes one line under `tag`. Texts longer than the log's own limit are cut by the log.
// The result (bytes written, or negative on failure) carries nothing that the library needs.
[[gnu::format(printf, 3, 4)]] int __android_log_print(int priority, const char* tag, const char* format, ...) noexcept;
}
