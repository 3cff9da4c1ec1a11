// Files that commands read and write.
#pragma once

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
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

// Throws StreamError when the output is the session that is read.
inline void refuseSession(const std::string& path, const std::string& session) {
    std::error_code ignored;
    if (std::filesystem::equivalent(path, session, ignored)) {
        throw StreamError(path + ": this is the session; choose another output file");
    }
}

// Throws StreamError when the folder of a file to write is missing.
inline void checkFolder(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code ignored;
    if (folder.empty() || std::filesystem::is_directory(folder, ignored)) return;
    throw StreamError(path + ": there is no folder " + folder.string());
}

// A file to write, or a closed one without a path. Throws StreamError when it cannot be opened or is the session.
inline std::ofstream openOutput(const std::string& path, const std::string& session) {
    if (path.empty()) return {};
    if (path == "-") throw std::invalid_argument("only --results can go to standard output");
    refuseSession(path, session);
    checkFolder(path);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) failOpening(path);
    return file;
}

// Throws StreamError when what was written has not reached the file.
inline void finish(std::ostream& file, const std::string& path) {
    if (!file.flush()) throw StreamError(path + ": cannot be written");
}

// The last part of a path.
inline std::string fileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

}  // namespace replay
