#!/usr/bin/env bash
# Builds and runs the benchmarks. Arguments go to Google Benchmark; --waits SECONDS runs the one of callers' waits instead,
# each of its scenes for that long.
set -euo pipefail
cd "$(dirname "$0")/.."
dpkg-query -W libbenchmark-dev >/dev/null 2>&1 || scripts/setup.sh ci
build=build/bench
cmake --preset release -B "$build" -DLSC_BUILD_TESTS=OFF -DLSC_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target lsc_frame_bench lsc_log_bench lsc_tail_bench >"$build/build.log" 2>&1 ||
    { tail -n 40 "$build/build.log"; exit 1; }
[ "${1:-}" = --waits ] && exec "$build/bench/lsc_tail_bench" "$2"
"$build/bench/lsc_frame_bench" "$@" 2>/dev/null
"$build/bench/lsc_log_bench" "$@" 2>/dev/null
