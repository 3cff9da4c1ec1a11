// Work in a process of its own, for what a process does once: the library reads its properties when the first call
// creates its object. The process is a copy of this one (fork) and starts no program, so it also works where the tool
// runs under an emulator. The library must not have been called, and no thread been started, before the copy is made.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace replay {

class Apart {
public:
    // Begins `work` in a new process. Throws StreamError when there can be none.
    explicit Apart(const std::function<std::string()>& work);
    // Waits for the process when take() has not.
    ~Apart();
    Apart(Apart&& other) noexcept;
    Apart& operator=(Apart&&) = delete;

    // Waits for the text that `work` returned. Throws what it threw: a SessionError as such, anything else as a
    // StreamError; also a StreamError when the process died. To be called once.
    std::string take();

private:
    void end();

    pid_t mProcess = -1;
    int mOutput = -1;
};

}  // namespace replay
