// Cuts the bytes of a text into lines: UTF-8, or UTF-16 with a byte order mark, ended by LF, CR LF or CR CR LF. Where
// shells have appended a text of the other encoding, lines of ASCII are read in theirs.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace replay::import {

class LineSplitter {
public:
    // Of a longer line only so many bytes are kept.
    static constexpr std::size_t kMaxLine = 100000;

    // Gets every line without its end; the text lives for the call.
    using Sink = std::function<void(std::string_view line)>;

    explicit LineSplitter(Sink sink) : mSink(std::move(sink)) {}

    // The next bytes of the text.
    void add(std::string_view bytes);
    // No more bytes come: the last line may have had no end. A new text may follow.
    void finish();

private:
    enum class Encoding { kUnknown, kUtf8, kUtf16Little, kUtf16Big };

    void detect(std::string_view& bytes);
    void addWide(std::string_view bytes);
    bool mayBeNarrow() const;
    void decode();
    void split(std::string_view text);
    void keep(std::string_view part);
    void give(std::string_view line);

    const Sink mSink;
    Encoding mEncoding = Encoding::kUnknown;
    std::string mBegin;       // the first bytes of the text, or of a line, too few to tell the encoding; or half a unit
    bool mLineBegins = true;  // in UTF-16
    std::string mDecoded;     // of UTF-16
    std::string mLine;        // the beginning of a line whose end has not come yet
    std::string mNarrow;      // a line without the zeros of UTF-16
    std::uint32_t mHigh = 0;  // a surrogate that waits for its other half
};

}  // namespace replay::import
