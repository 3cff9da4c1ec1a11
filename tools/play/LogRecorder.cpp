#include "tools/play/LogRecorder.h"

#include <unistd.h>

#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

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
    std::string source = "F/ULog:";
    if (entry.output == Output::kAndroid) source = fmt::format("{}/{}", letterOfPriority(entry.priority), entry.tag);
    if (entry.output == Output::kUnified) source = fmt::format("{}/ULog:{}", letterOfLevel(entry.priority), entry.tag);
    return fmt::format("{}({:5}): ", source, getpid());
}

// Each line of a text gets the head, as in logcat; a line end that closes the text adds no empty line.
void print(std::ostream& out, const host::LogEntry& entry) {
    const std::string head = headOf(entry);
    const std::string asserted = fmt::format("onAssert({})", entry.priority);
    std::string_view text = entry.output == Output::kUnifiedAssert ? asserted : entry.text;
    if (text.ends_with('\n')) text.remove_suffix(1);
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = text.find('\n');
        out << head << text.substr(0, end) << '\n';
        if (end != std::string_view::npos) text.remove_prefix(end + 1);
    }
}

}  // namespace

LogRecorder::LogRecorder(std::ostream* echo, bool keeps) : mEcho(echo), mKeeps(keeps) {
    if (mEcho == nullptr && !mKeeps) return;
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
    if (mKeeps) mEntries.push_back(entry);
    if (mEcho != nullptr) print(*mEcho, entry);
}

}  // namespace replay
