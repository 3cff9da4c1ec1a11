// A file that is compressed as it is written.
#pragma once

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace replay {

class GzipFile : public std::ostream {
public:
    // Truncates the file; the stream has failed, with errno set, when it cannot be opened. flush() finishes the file:
    // whether everything was written is known then.
    explicit GzipFile(const std::string& path);

private:
    std::unique_ptr<std::streambuf> mBuffer;
};

}  // namespace replay
