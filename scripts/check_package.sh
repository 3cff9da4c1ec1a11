#!/usr/bin/env bash
# Installs a build into a scratch folder and uses the result as a stranger would: through CMake, through pkg-config, and
# by running the installed tool.
#
#   scripts/check_package.sh BUILD_FOLDER
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cp "$root"/tests/package/* "$scratch"
cd "$scratch"

cmake -S . -B with-cmake -DCMAKE_PREFIX_PATH="$scratch/prefix" -DCMAKE_CXX_STANDARD=20 >/dev/null
cmake --build with-cmake >/dev/null
echo "CMake package: $(with-cmake/consumer)"

export PKG_CONFIG_PATH=$scratch/prefix/lib/pkgconfig
# shellcheck disable=SC2046  # the flags are words of their own
c++ -std=c++20 main.cpp -o with-pkg-config $(pkg-config --cflags --libs lsc_custom) "-Wl,-rpath,$scratch/prefix/lib"
echo "pkg-config $(pkg-config --modversion lsc_custom): $(./with-pkg-config)"

echo "installed tool: $(prefix/bin/lsc_replay --version)"
prefix/bin/lsc_replay --results /dev/null "$root/examples/handheld.jsonl" | tail -n 1
ls -1 prefix/lib | grep '^lib'
