#include "tests/support/LogCapture.h"

#include <string_view>
#include <utility>

namespace test {

namespace {

// "{#12:some/folder/Unit.cpp}" at the end becomes "{#LINE:Unit}".
std::string withShortSite(const std::string& text) {
    constexpr std::string_view kEnd = ".cpp}";
    const std::size_t site = text.rfind("{#");
    if (site == std::string::npos || !text.ends_with(kEnd)) return text;
    const std::size_t unit = text.find_last_of("/:") + 1;
    return text.substr(0, site) + "{#LINE:" + text.substr(unit, text.size() - kEnd.size() - unit) + "}";
}

}  // namespace

std::string describe(const host::LogEntry& entry) {
    switch (entry.output) {
        case host::LogEntry::Output::kAndroid:
            return "android " + std::to_string(entry.priority) + " " + entry.tag + ": " + withShortSite(entry.text);
        case host::LogEntry::Output::kUnified:
            return "ulog " + std::to_string(entry.priority) + " " + entry.tag + ": " + entry.text;
        case host::LogEntry::Output::kUnifiedAssert:
            return "ulog_assert " + std::to_string(entry.priority);
    }
    return {};
}

LogCapture::LogCapture() {
    host::setLogSink([this](const host::LogEntry& entry) { mLines.push_back(describe(entry)); });
}

LogCapture::~LogCapture() {
    host::setLogSink(nullptr);
}

std::vector<std::string> LogCapture::take() {
    return std::exchange(mLines, {});
}

}  // namespace test
