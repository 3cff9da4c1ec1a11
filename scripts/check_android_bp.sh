#!/usr/bin/env bash
# Android.bp as far as Debian's tools read it: its format, its sources against CMake's, and one build of the library from
# it with Clang and libc++. What Debian's translator leaves out (language standard, version script, sanitizers) is said
# here again. Needs a configured build/clang-libcxx.
set -euo pipefail
cd "$(dirname "$0")/.."

difference=$(bpfmt -d Android.bp)
if [ -n "$difference" ]; then
    printf 'Android.bp is not formatted as bpfmt would:\n%s\n' "$difference"
    exit 1
fi

rm -rf build/soong
mkdir -p build/soong
for part in aaa abi customer platform Android.bp; do ln -s "../../$part" build/soong/; done
cd build/soong
mini-soong Android.bp Makefile

python3 - ../clang-libcxx/compile_commands.json <<'END'
import json, os, re, sys
soong = set(re.search(r"^liblsc_custom_SRCS *= (.*)$", open("Makefile").read(), re.M).group(1).split())
root = os.path.realpath("../..")
cmake = {os.path.relpath(command["file"], root) for command in json.load(open(sys.argv[1]))
         if re.search(r"/lsc_(hidden|units)\.dir/", command["command"])}
for name in sorted(soong ^ cmake):
    print(f"{name}: only in {'Android.bp' if name in soong else 'CMakeLists.txt'}")
sys.exit(soong != cmake or not soong)
END

make --silent CC=clang++-19 CPPFLAGS=-Werror CXXFLAGS="-std=c++20 -stdlib=libc++ -O1 -fPIC" \
    LDFLAGS="-fuse-ld=lld -stdlib=libc++ -Wl,--version-script=abi/lsc_custom.map.txt" LDLIBS= >make.log 2>&1 ||
    { tail -n 20 make.log; exit 1; }
python3 ../../scripts/check_symbols.py liblsc_custom.so ../../abi/symbols.txt
