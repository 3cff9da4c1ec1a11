#!/usr/bin/env bash
# Measures which lines, branches and conditions (MC/DC) of the shipped library the tests reach, and prints what is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/coverage
raw=$build/raw
rm -rf "$raw"
cmake --preset coverage >/dev/null
cmake --build --preset coverage --target lsc_host_tests lsc_unit_tests lsc_exhaustive_tests lsc_api_tests lsc_replay >"$build/build.log" 2>&1 || { tail -n 40 "$build/build.log"; exit 1; }
LLVM_PROFILE_FILE=$PWD/$raw/%p-%m.profraw ctest --preset coverage -L 'unit|api|session' >"$build/test.log" 2>&1 ||
    { tail -n 40 "$build/test.log"; exit 1; }
llvm-profdata-19 merge -sparse "$raw"/*.profraw -o "$build/tests.profdata"
llvm-cov-19 export "$build/liblsc_custom.so" -object "$build/tests/lsc_unit_tests" \
    -instr-profile "$build/tests.profdata" aaa customer >"$build/coverage.json"
python3 scripts/coverage_report.py "$build/coverage.json"
