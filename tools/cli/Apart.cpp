#include "tools/cli/Apart.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/session/Errors.h"

namespace replay {
namespace {

// What the first byte says of the text after it.
enum Mark : char { kResult = 'r', kBadSession = 's', kFailure = 'f' };

std::string outcomeOf(const std::function<std::string()>& work) {
    try {
        return char(kResult) + work();
    } catch (const SessionError& error) {
        return char(kBadSession) + std::string(error.what());
    } catch (const std::bad_alloc&) {
        return char(kFailure) + std::string("not enough memory");
    } catch (const std::exception& error) {
        return char(kFailure) + std::string(error.what());
    }
}

void writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return;                                // nobody listens any more
        text.remove_prefix(static_cast<std::size_t>(written));  // not negative
    }
}

std::string readAll(int file) {
    std::string text;
    std::array<char, 16384> chunk{};
    for (;;) {
        const ssize_t got = read(file, chunk.data(), chunk.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return text;
        text.append(chunk.data(), static_cast<std::size_t>(got));  // positive
    }
}

[[noreturn]] void failStarting() {
    throw StreamError("cannot start a process: " + std::generic_category().message(errno));
}

}  // namespace

Apart::Apart(const std::function<std::string()>& work) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) failStarting();
    mProcess = fork();
    if (mProcess < 0) {
        close(ends[0]);
        close(ends[1]);
        failStarting();
    }
    if (mProcess == 0) {
        close(ends[0]);
        writeAll(ends[1], outcomeOf(work));
        _exit(0);  // what the parent has open and buffered is the parent's to end
    }
    close(ends[1]);
    mOutput = ends[0];
}

Apart::Apart(Apart&& other) noexcept
    : mProcess(std::exchange(other.mProcess, -1)), mOutput(std::exchange(other.mOutput, -1)) {}

Apart::~Apart() {
    end();
}

void Apart::end() {
    if (mProcess < 0) return;
    close(mOutput);
    while (waitpid(mProcess, nullptr, 0) < 0 && errno == EINTR) {
    }
    mProcess = -1;
}

std::string Apart::take() {
    std::string text = readAll(mOutput);
    end();
    if (text.empty()) throw StreamError("a process that played the session ended early");
    const char mark = text.front();
    text.erase(0, 1);
    if (mark == kBadSession) throw SessionError(text);
    if (mark == kFailure) throw StreamError(text);
    return text;
}

}  // namespace replay
