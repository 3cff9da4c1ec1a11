#include "tools/report/Gnuplot.h"

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

[[noreturn]] void failTemporary() {
    throw StreamError("no temporary file for gnuplot: " + std::generic_category().message(errno));
}

// A file and not a pipe: gnuplot may give up before it has read everything.
ScriptFile fileWith(const std::string& text) {
    ScriptFile file(std::tmpfile());
    if (!file || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() || std::fflush(file.get()) != 0) {
        failTemporary();
    }
    std::rewind(file.get());
    return file;
}

std::string contentOf(std::FILE* file) {
    std::string text;
    char block[4096];
    std::rewind(file);
    while (const std::size_t size = std::fread(block, 1, sizeof block, file))
        text.append(block, size);
    return text;
}

[[noreturn]] void failMissing() {
    throw StreamError(
        "gnuplot, which draws the pictures, is not installed: install the package gnuplot-nox, or ask for a .gp file");
}

pid_t start(int input, int output) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
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

std::string runGnuplot(const std::string& script) {
    const ScriptFile input = fileWith(script);
    const ScriptFile output = fileWith({});
    const pid_t process = start(fileno(input.get()), fileno(output.get()));
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    // A spawn that does not share the parent's memory, as under an emulator, reports a missing program so.
    constexpr int kNotFound = 127;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) failMissing();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw StreamError("gnuplot could not draw the picture");
    return contentOf(output.get());
}

}  // namespace replay
