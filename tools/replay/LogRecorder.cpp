#include "tools/replay/LogRecorder.h"

#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

#include "platform/AndroidLog.h"

namespace replay {
namespace {

using Output = host::LogEntry::Output;

char letterOfPriority(int priority) {
    switch (priority) {
        case kAndroidLogDebug:
            return 'D';
        case kAndroidLogError:
            return 'E';
        case kAndroidLogFatal:
            return 'F';
        default:
            return '?';
    }
}

// The unified logger's levels count the other way: 1 is an error, 5 a detail.
char letterOfLevel(int level) {
    if (level == 1) return 'E';
    return level == 5 ? 'D' : '?';
}

std::string headOf(const host::LogEntry& entry) {
    char process[16];
    std::snprintf(process, sizeof process, "(%5d): ", static_cast<int>(getpid()));  // pid_t is an int
    switch (entry.output) {
        case Output::kAndroid:
            return std::string(1, letterOfPriority(entry.priority)) + '/' + entry.tag + process;
        case Output::kUnified:
            return std::string(1, letterOfLevel(entry.priority)) + "/ULog:" + entry.tag + process;
        case Output::kUnifiedAssert:
            break;
    }
    return std::string("F/ULog:") + process;
}

// Each line of a text gets the head, as in logcat; a line end that closes the text adds no empty line.
void print(std::ostream& out, const host::LogEntry& entry) {
    const std::string head = headOf(entry);
    const std::string asserted = "onAssert(" + std::to_string(entry.priority) + ")";
    std::string_view text = entry.output == Output::kUnifiedAssert ? asserted : entry.text;
    if (text.ends_with('\n')) text.remove_suffix(1);
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = text.find('\n');
        out << head << text.substr(0, end) << '\n';
        if (end != std::string_view::npos) text.remove_prefix(end + 1);
    }
}

}  // namespace

LogRecorder::LogRecorder(std::ostream* echo) : mEcho(echo) {
    host::setLogSink([this](const host::LogEntry& entry) { receive(entry); });
}

LogRecorder::~LogRecorder() {
    host::setLogSink(nullptr);
}

std::vector<host::LogEntry> LogRecorder::take() {
    return std::exchange(mEntries, {});
}

void LogRecorder::receive(const host::LogEntry& entry) {
    if (!mRecording) return;
    mEntries.push_back(entry);
    if (mEcho != nullptr) print(*mEcho, entry);
}

}  // namespace replay
