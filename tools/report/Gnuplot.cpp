#include "tools/report/Gnuplot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "tools/session/Errors.h"

namespace replay {
namespace {

struct CloseScript {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using ScriptFile = std::unique_ptr<std::FILE, CloseScript>;

// A file and not a pipe: gnuplot may give up before it has read everything.
ScriptFile fileWith(const std::string& text) {
    ScriptFile file(std::tmpfile());
    if (!file || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() || std::fflush(file.get()) != 0) {
        throw StreamError("cannot write a temporary file for gnuplot: " + std::generic_category().message(errno));
    }
    std::rewind(file.get());
    return file;
}

[[noreturn]] void failMissing() {
    throw StreamError(
        "gnuplot, which draws the pictures, is not installed: install the package gnuplot-nox, or ask for a .gp file");
}

pid_t start(int input) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    // Standard output is the table's.
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    char program[] = "gnuplot";
    char* const arguments[] = {program, nullptr};
    pid_t process = 0;
    const int error = posix_spawnp(&process, program, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT) failMissing();
    if (error != 0) throw StreamError("gnuplot cannot be started: " + std::generic_category().message(error));
    return process;
}

}  // namespace

void runGnuplot(const std::string& script) {
    const ScriptFile input = fileWith(script);
    const pid_t process = start(fileno(input.get()));
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    // A spawn that does not share the parent's memory, as under an emulator, reports a missing program so.
    constexpr int kNotFound = 127;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) failMissing();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw StreamError("gnuplot could not draw the picture");
}

}  // namespace replay
