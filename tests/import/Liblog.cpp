// Android's own log library in front of ours: what a capture looks like when the real formatter writes it, and what the
// library logs through the real __android_log_print.
//
//   lsc_liblog format FORM [MODIFIER...]   records on standard input, as logcat -v prints them on standard output
//   lsc_liblog play SESSION                plays a session; what reached the Android log, as "PRIORITY TAG TEXT"
//
// A record is a line: seconds, nanoseconds, process, thread, priority, tag and text with tabs between them; "\n" in the
// text stands for a new line.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

// The real header stands in for platform/AndroidLog.h, which declares the same function.
#include <android/log.h>
#include <log/logprint.h>

#include "tools/play/Player.h"

namespace {

constexpr int kUser = 1047;
constexpr std::string_view kPriorities = "??VDIWEFS";  // by number

struct FreeFormat {
    void operator()(AndroidLogFormat* format) const { android_log_format_free(format); }
};
using Format = std::unique_ptr<AndroidLogFormat, FreeFormat>;

Format formatOf(int count, char** names) {
    Format format(android_log_format_new());
    for (int i = 0; i < count; ++i) {
        const AndroidLogPrintFormat part = android_log_formatFromString(names[i]);
        if (part == FORMAT_OFF) throw std::invalid_argument(std::string("no form or modifier of the log: ") + names[i]);
        android_log_setPrintFormat(format.get(), part);
    }
    return format;
}

std::string unescaped(std::string text) {
    for (std::size_t at = text.find("\\n"); at != std::string::npos; at = text.find("\\n", at)) {
        text.erase(at, 1);
        text[at] = '\n';
    }
    return text;
}

void printRecord(AndroidLogFormat* format, const std::string& line) {
    std::istringstream fields(line);
    AndroidLogEntry entry{};
    char priority = 0;
    std::string tag;
    std::string text;
    fields >> entry.tv_sec >> entry.tv_nsec >> entry.pid >> entry.tid >> priority;
    fields.ignore();  // a tab
    std::getline(fields, tag, '\t');
    std::getline(fields, text);
    text = unescaped(text);
    entry.uid = kUser;
    // Cast: a place in a short text.
    entry.priority = static_cast<android_LogPriority>(kPriorities.find(priority));
    entry.tag = tag.c_str();
    entry.tagLen = tag.size();
    entry.message = text.c_str();
    entry.messageLen = text.size();
    std::array<char, 512> buffer{};
    std::size_t length = 0;
    char* const made = android_log_formatLogLine(format, buffer.data(), buffer.size(), &entry, &length);
    if (made == nullptr) throw std::runtime_error(std::string("a record cannot be formatted: ").append(line));
    std::cout << std::string_view(made, length);
    if (made != buffer.data()) std::free(made);
}

void printMessage(const __android_logger_data* data, const char* text) {
    // Cast: a priority is a small number.
    std::cout << kPriorities.at(static_cast<std::size_t>(data->priority)) << ' ' << data->tag << ' ' << text << '\n';
}

void play(const char* path) {
    // Off a device the library keeps what is less than information to itself.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(printMessage);
    std::ifstream session(path);
    replay::play(session, {});
}

int run(int count, char** arguments) {
    const std::string_view command = count > 1 ? arguments[1] : "";
    if (command == "play" && count == 3) {
        play(arguments[2]);
        return 0;
    }
    if (command != "format" || count < 3) throw std::invalid_argument("expected: format FORM..., or play SESSION");
    const Format format = formatOf(count - 2, arguments + 2);
    for (std::string line; std::getline(std::cin, line);)
        printRecord(format.get(), line);
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return run(count, arguments);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
