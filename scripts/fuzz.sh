#!/usr/bin/env bash
# Runs every fuzz target under libFuzzer with the address and undefined-behaviour sanitizers and the library's
# assertions, for SECONDS each (60), and ends with a failure when one of them finds something; the input is then left in
# build/fuzz.
#
#   scripts/fuzz.sh [SECONDS]
#   scripts/fuzz.sh --merge     puts what was reached beyond the seeds into them: as few inputs as possible, and short ones
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/fuzz
targets=(buffer camera import otp session)
cmake --preset fuzz -DLSC_BUILD_TESTS=ON >/dev/null
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}" >"$build/build.log" 2>&1 ||
    { tail -n 40 "$build/build.log"; exit 1; }

if [ "${1:-}" = --merge ]; then
    for target in "${targets[@]}"; do
        old=$build/seeds.$target
        rm -rf "$old" && mkdir -p fuzz/seeds/"$target" "$build/corpus/$target" && mv fuzz/seeds/"$target" "$old"
        mkdir fuzz/seeds/"$target"
        "$build/fuzz/fuzz_$target" -max_len=700 -set_cover_merge=1 fuzz/seeds/"$target" "$old" "$build/corpus/$target" \
            >"$build/merge.log" 2>&1 || { tail -n 40 "$build/merge.log"; exit 1; }
        [ "$target" != import ] || cp -n "$old"/*.* fuzz/seeds/import  # named captures stay
        echo "$target: $(find fuzz/seeds/"$target" -type f | wc -l) seeds."
    done
    exit
fi

fuzz() {
    local target=$1 corpus=$build/corpus/$1 log=$build/$1.log
    local seeds=(fuzz/seeds/"$target")
    [ "$target" != session ] || seeds+=(tests/sessions)
    mkdir -p "$corpus"
    "$build/fuzz/fuzz_$target" -max_total_time="$2" -print_final_stats=1 -artifact_prefix="$build/found-$target-" \
        "$corpus" "${seeds[@]}" >"$log" 2>&1 || { tail -n 40 "$log"; return 1; }
    echo "$target: $(awk '/executed_units/ {print $2}' "$log") inputs, no finding. $(grep '^calculations:' "$log" || true)"
}
export -f fuzz
export build
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c "fuzz {} ${1:-60}"
