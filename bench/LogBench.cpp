// What a debug message costs that no output wants.
#include <benchmark/benchmark.h>

#include "platform/host/Host.h"

#define LSC_LOG_TAG "Bench"
#include "aaa/aaa/lsc/ShadingLog.h"

namespace {

// Switches: mode, details level, details mask; each set stops the message at another test of the gate.
void Debug_Suppressed(benchmark::State& state) {
    host::setLogSwitches(static_cast<std::int32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1)),
                         static_cast<std::uint32_t>(state.range(2)));
    int argument = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(argument);
        LSC_LOG_DEBUG("value %d", argument);
        benchmark::ClobberMemory();
    }
    host::reset();
}
BENCHMARK(Debug_Suppressed)->Args({1, 4, 0x821000})->Args({1, 5, 0x21000})->Args({0, 5, 0x821000});

}  // namespace
