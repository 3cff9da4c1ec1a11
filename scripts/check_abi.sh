#!/usr/bin/env bash
# Compares the ABI of the release library with the recorded one; --update records it anew.
#
#   scripts/check_abi.sh [--update]
set -euo pipefail
cd "$(dirname "$0")/.."
recorded=abi/lsc_custom.abi
current=build/lsc_custom.abi

abidw --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only --drop-undefined-syms \
    --type-id-style hash --out-file "$current" build/release/liblsc_custom.so
if [ "${1:-}" = --update ]; then
    cp "$current" "$recorded"
    echo "Recorded in $recorded."
else
    abidiff "$recorded" "$current" && echo "The ABI is the recorded one."
fi
