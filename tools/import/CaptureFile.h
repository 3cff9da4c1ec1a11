// The bytes of a capture, wherever it is: a file, standard input, compressed, or in a bug report's archive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace replay::import {

class CaptureFile {
public:
    // Opens the file `path`, or standard input for "-". Throws StreamError.
    explicit CaptureFile(const std::string& path);
    ~CaptureFile();
    CaptureFile(const CaptureFile&) = delete;
    CaptureFile& operator=(const CaptureFile&) = delete;

    // Reads everything. `bytes` gets the text piece by piece, `end` is called after each text: an archive may hold
    // several. Throws StreamError for what cannot be read or is no text.
    void read(const std::function<void(std::string_view)>& bytes, const std::function<void()>& end);

    // The path, or "standard input".
    const std::string& name() const { return mName; }

    // Bytes of the file, 0 where nobody knows, and how many of them are read.
    std::uint64_t size() const { return mSize; }
    std::uint64_t position() const { return mPosition; }

private:
    struct Unpacker;

    std::string_view readBlock();
    void unpack(std::string_view first, const std::function<void(std::string_view)>& bytes,
                const std::function<void()>& end);

    const std::string mName;
    int mFile = -1;
    std::uint64_t mSize = 0;
    std::uint64_t mPosition = 0;
    std::string mBlock;
};

}  // namespace replay::import
