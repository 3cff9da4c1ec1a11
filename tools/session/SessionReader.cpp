#include "tools/session/SessionReader.h"

#include <cerrno>
#include <iterator>

#include <fmt/format.h>

#include "tools/session/Errors.h"
#include "tools/session/Expectation.h"
#include "tools/session/Limits.h"

namespace replay {
namespace {

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace

// Part by part, so that an endless line does not fill the memory.
bool SessionReader::readLine() {
    mText.clear();
    ++mNumber;
    for (;;) {
        errno = 0;
        mInput.getline(mPart.data(), std::ssize(mPart));
        // libc++ takes an input error for the end of the file.
        if (mInput.eof() && errno != 0) mInput.setstate(std::ios::badbit);
        const auto got = static_cast<std::size_t>(mInput.gcount());  // a count
        mBytes += got;
        const bool ended = mInput.good();
        mText.append(mPart.data(), ended ? got - 1 : got);
        if (mText.size() > kMaxLineSize) throw LineError(fmt::format("longer than {} bytes", kMaxLineSize));
        if (mInput.bad()) return false;
        if (ended || mInput.eof()) return got > 0 || !mText.empty();
        mInput.clear();  // the line has more parts
    }
}

bool SessionReader::next() {
    while (readLine()) {
        if (!mText.empty() && mText.back() == '\r') mText.pop_back();
        if (!isBlank(mText) && (mText.front() != '#' || isExpectation(mText))) return true;
    }
    if (mInput.bad()) throw StreamError(mName + ": cannot be read");
    return false;
}

}  // namespace replay
