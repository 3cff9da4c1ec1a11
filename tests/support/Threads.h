// Threads that wait for each other without a clock.
#pragma once

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <utility>

namespace test {

// Whether a thread of this process sleeps, as one does that waits for a lock.
inline bool isAsleep(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t name = stat.rfind(") ");  // the name may hold anything
    return name != std::string::npos && stat[name + 2] == 'S';
}

// Runs `work` on a thread, and comes back when it has ended or waits.
template <typename Work>
std::future<void> startUntilItWaits(Work work) {
    std::promise<pid_t> started;
    std::future<pid_t> id = started.get_future();
    auto running = std::async(std::launch::async, [started = std::move(started), work]() mutable {
        started.set_value(gettid());
        work();
    });
    const pid_t thread = id.get();
    while (running.wait_for(std::chrono::seconds(0)) != std::future_status::ready && !isAsleep(thread))
        std::this_thread::yield();
    return running;
}

}  // namespace test
