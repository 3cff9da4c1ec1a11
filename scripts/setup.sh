#!/usr/bin/env bash
# Installs the Debian packages that are missing. `setup.sh` is enough to build and test; `setup.sh ci` adds what the
# slower checks need.
set -euo pipefail

packages=(g++ cmake ninja-build python3 googletest libsimdjson-dev nlohmann-json3-dev libcli11-dev libfmt-dev
          libarchive-dev zlib1g-dev gnuplot-nox libjs-dygraphs)
if [ "${1:-}" = ci ]; then
    packages+=(clang-19 clang-tidy-19 lld-19 llvm-19 libc++-19-dev libc++abi-19-dev libclang-rt-19-dev clang-format
               cppcheck qemu-user abigail-tools pkg-config perl binutils libbenchmark-dev android-liblog-dev
               python3-pandas chromium blueprint-tools
               mini-soong)
fi

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Not root and no sudo: install these packages by hand." >&2; exit 1; }
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
