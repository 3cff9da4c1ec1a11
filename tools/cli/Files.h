// Files that commands read.
#pragma once

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "tools/session/Errors.h"

namespace replay {

// Throws StreamError with the reason.
[[noreturn]] inline void failOpening(const std::string& path) {
    throw StreamError(path + ": " + std::generic_category().message(errno));
}

// Throws StreamError when the file cannot be read.
inline std::ifstream openInput(const std::string& path) {
    std::ifstream input(path, std::ios::binary);
    if (!input) failOpening(path);
    // A directory opens, and fails when it is read.
    if (std::filesystem::is_directory(path)) throw StreamError(path + ": is a directory");
    return input;
}

}  // namespace replay
