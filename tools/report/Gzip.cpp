#include "tools/report/Gzip.h"

#include <array>
#include <cerrno>

#include <zlib.h>

#include "tools/session/Narrow.h"

namespace replay {
namespace {

// Traces are large and repeat themselves: more than this level costs time and saves little.
constexpr const char* kMode = "wb3";

class GzipBuffer : public std::streambuf {
public:
    explicit GzipBuffer(const std::string& path) : mFile(gzopen(path.c_str(), kMode)) {
        setp(mBuffer.data(), mBuffer.data() + mBuffer.size());
    }
    ~GzipBuffer() override {
        if (mFile != nullptr) gzclose(mFile);
    }
    GzipBuffer(const GzipBuffer&) = delete;
    GzipBuffer& operator=(const GzipBuffer&) = delete;

    bool isOpen() const { return mFile != nullptr; }

protected:
    int_type overflow(int_type character) override {
        if (!drain()) return traits_type::eof();
        if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
        return sputc(traits_type::to_char_type(character));
    }
    int sync() override { return drain() && gzflush(mFile, Z_FINISH) == Z_OK ? 0 : -1; }

private:
    bool drain() {
        const auto size = narrow<unsigned>(pptr() - pbase());
        setp(mBuffer.data(), mBuffer.data() + mBuffer.size());
        return mFile != nullptr && (size == 0 || gzwrite(mFile, mBuffer.data(), size) > 0);
    }

    const gzFile mFile;
    std::array<char, 1 << 16> mBuffer;
};

}  // namespace

GzipFile::GzipFile(const std::string& path) : std::ostream(nullptr) {
    errno = 0;
    auto buffer = std::make_unique<GzipBuffer>(path);
    const bool isOpen = buffer->isOpen();
    mBuffer = std::move(buffer);
    rdbuf(mBuffer.get());
    if (!isOpen) setstate(failbit);
}

}  // namespace replay
