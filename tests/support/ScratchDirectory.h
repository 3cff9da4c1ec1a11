// A new empty directory as the working directory, until destruction.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace test {

// Where hall dumps go, from the working directory.
inline constexpr char kDumpDirectory[] = "data/vendor/camera_dump";

class ScratchDirectory {
public:
    ScratchDirectory() : mBefore(std::filesystem::current_path()) {
        mPath = (std::filesystem::temp_directory_path() / "lsc-test-XXXXXX").string();
        std::filesystem::current_path(::mkdtemp(mPath.data()));
    }
    ~ScratchDirectory() {
        std::filesystem::current_path(mBefore);
        std::filesystem::remove_all(mPath);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

private:
    const std::filesystem::path mBefore;
    std::string mPath;
};

}  // namespace test
