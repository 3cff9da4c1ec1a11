#include "tools/import/CaptureFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <archive.h>
#include <archive_entry.h>

#include <cerrno>
#include <memory>
#include <system_error>

#include "tools/session/Errors.h"

namespace replay::import {
namespace {

constexpr std::size_t kBlock = 1 << 18;

struct FreeArchive {
    void operator()(archive* a) const { archive_read_free(a); }
};

bool isUtf16(std::string_view begin) {
    return begin.starts_with("\xFF\xFE") || begin.starts_with("\xFE\xFF");
}

// Text has no zero bytes but in UTF-16, and no format that is unpacked looks like text.
bool isPacked(std::string_view begin) {
    constexpr std::size_t kLooked = 4096;
    if (isUtf16(begin)) return false;
    return begin.starts_with("\x1f\x8b") || begin.starts_with("PK\x03\x04") ||
           begin.substr(0, kLooked).find('\0') != std::string_view::npos;
}

// Whether a file of an archive may be a log: the texts at its top.
bool isLogName(std::string_view name) {
    if (name.starts_with("./")) name.remove_prefix(2);
    if (name.find('/') != std::string_view::npos) return false;
    return name.ends_with(".txt") || name.ends_with(".log");
}

}  // namespace

struct CaptureFile::Unpacker {
    CaptureFile& file;
    std::string_view first;

    static la_ssize_t read(archive* a, void* self, const void** block) {
        auto* const unpacker = static_cast<Unpacker*>(self);
        // No exception may pass through the library that calls this.
        try {
            const std::string_view bytes = unpacker->first.empty() ? unpacker->file.readBlock() : unpacker->first;
            unpacker->first = {};
            *block = bytes.data();
            return static_cast<la_ssize_t>(bytes.size());  // a block
        } catch (const StreamError& error) {
            archive_set_error(a, EIO, "%s", error.what());
            return ARCHIVE_FATAL;
        }
    }
};

CaptureFile::CaptureFile(const std::string& path) : mName(path == "-" ? "standard input" : path), mBlock(kBlock, '\0') {
    mFile = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (mFile < 0) throw StreamError(path + ": " + std::generic_category().message(errno));
    struct stat about = {};
    const bool known = fstat(mFile, &about) == 0;
    if (known && S_ISDIR(about.st_mode)) {
        close(mFile);
        throw StreamError(path + ": is a directory");
    }
    if (known && S_ISREG(about.st_mode)) mSize = static_cast<std::uint64_t>(about.st_size);  // not negative
}

CaptureFile::~CaptureFile() {
    if (mFile > STDIN_FILENO) close(mFile);
}

std::string_view CaptureFile::readBlock() {
    ssize_t got = -1;
    do {
        got = ::read(mFile, mBlock.data(), mBlock.size());
    } while (got < 0 && errno == EINTR);
    if (got < 0) throw StreamError(mName + ": cannot be read: " + std::generic_category().message(errno));
    mPosition += static_cast<std::uint64_t>(got);  // not negative
    return std::string_view(mBlock).substr(0, static_cast<std::size_t>(got));
}

void CaptureFile::read(const std::function<void(std::string_view)>& bytes, const std::function<void()>& end) {
    std::string_view block = readBlock();
    if (isPacked(block)) return unpack(block, bytes, end);
    for (; !block.empty(); block = readBlock())
        bytes(block);
    end();
}

void CaptureFile::unpack(std::string_view first, const std::function<void(std::string_view)>& bytes,
                         const std::function<void()>& end) {
    const std::unique_ptr<archive, FreeArchive> packed(archive_read_new());
    if (!packed) throw StreamError(mName + ": no memory to unpack it");
    archive* const a = packed.get();
    const auto fail = [&]() {
        const char* const reason = archive_error_string(a);
        throw StreamError(mName + ": cannot be unpacked: " + (reason != nullptr ? reason : "damaged"));
    };
    archive_read_support_filter_all(a);
    archive_read_support_format_zip(a);
    archive_read_support_format_tar(a);
    archive_read_support_format_raw(a);
    Unpacker unpacker{*this, first};
    if (archive_read_open(a, &unpacker, nullptr, &Unpacker::read, nullptr) != ARCHIVE_OK) fail();
    bool found = false;
    archive_entry* entry = nullptr;
    int status = ARCHIVE_OK;
    while ((status = archive_read_next_header(a, &entry)) == ARCHIVE_OK) {
        const bool raw = archive_format(a) == ARCHIVE_FORMAT_RAW;
        if (raw && archive_filter_count(a) == 1)
            throw StreamError(mName + ": is neither text nor compressed in a known way");
        const char* const name = archive_entry_pathname(entry);
        if (!raw && (name == nullptr || !isLogName(name))) continue;
        found = true;
        const void* block = nullptr;
        std::size_t size = 0;
        la_int64_t offset = 0;
        while ((status = archive_read_data_block(a, &block, &size, &offset)) == ARCHIVE_OK)
            bytes({static_cast<const char*>(block), size});
        if (status != ARCHIVE_EOF) fail();
        end();
    }
    if (status != ARCHIVE_EOF) fail();
    if (!found) throw StreamError(mName + ": an archive without a .txt or .log file at its top");
}

}  // namespace replay::import
