#include "tools/session/SessionReader.h"

#include <set>
#include <vector>

#include "tools/session/Errors.h"
#include "tools/session/Expectation.h"

namespace replay {
namespace {

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace

bool SessionReader::next() {
    while (std::getline(mInput, mText)) {
        ++mNumber;
        mBytes += mText.size() + 1;
        if (!mText.empty() && mText.back() == '\r') mText.pop_back();
        if (!isBlank(mText) && (mText.front() != '#' || isExpectation(mText))) return true;
    }
    if (mInput.bad()) throw StreamError(mName + ": cannot be read");
    return false;
}

}  // namespace replay
