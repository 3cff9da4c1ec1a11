#!/usr/bin/env bash
# Runs every fuzz target under libFuzzer with the address and undefined-behaviour sanitizers, for SECONDS each (60), and
# ends with a failure when one of them finds something; the input is then left in build/fuzz.
#
#   scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
build=build/fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzz_buffer fuzz_import fuzz_otp fuzz_session >"$build/build.log" 2>&1 ||
    { tail -n 40 "$build/build.log"; exit 1; }

for target in buffer import otp session; do
    corpus=$build/corpus/$target
    mkdir -p "$corpus"
    seeds=fuzz/seeds/$target
    [ "$target" = session ] && seeds=tests/sessions
    log=$build/$target.log
    "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$build/found-$target-" \
        "$corpus" "$seeds" >"$log" 2>&1 || { tail -n 40 "$log"; exit 1; }
    echo "$target: $(awk '/executed_units/ {print $2}' "$log") inputs, no finding."
done
