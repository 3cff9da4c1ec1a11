#!/usr/bin/env bash
# Unpacks a sysroot for aarch64-linux-gnu with libc++ into a folder, from Debian's arm64 packages. Nothing of the machine
# changes: libc++ of another architecture cannot be installed beside the machine's own, so the packages are only
# downloaded, with an apt state of their own.
#
#   scripts/arm64_sysroot.sh FOLDER
set -euo pipefail
sysroot=$(mkdir -p "$1" && cd "$1" && pwd)
packages=(libc6 libc6-dev linux-libc-dev libcrypt1 libcrypt-dev libgcc-s1 libgcc-12-dev gcc-12-base libatomic1
          libc++1-19 libc++-19-dev libc++abi1-19 libc++abi-19-dev libunwind-19 libunwind-19-dev
          libsimdjson-dev libsimdjson14 nlohmann-json3-dev libcli11-dev libfmt-dev libfmt9 zlib1g
          zlib1g-dev libarchive-dev libarchive13 libacl1 libbz2-1.0 libicu72 liblz4-1 liblzma5 libnettle8 libstdc++6 libxml2
          libzstd1)

stamp=$sysroot/packages.txt
[ "$(cat "$stamp" 2>/dev/null)" = "${packages[*]}" ] && exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/state/lists/partial" "$work/cache/archives/partial"
: > "$work/state/status"
apt_arm64=(apt-get -qq -o APT::Architecture=arm64 -o APT::Architectures=arm64 -o Dir::State="$work/state"
           -o Dir::State::status="$work/state/status" -o Dir::Cache="$work/cache" -o Debug::NoLocking=true
           -o APT::Sandbox::User=root)

echo "Downloading ${#packages[@]} arm64 packages ..." >&2
"${apt_arm64[@]}" update
(cd "$work" && "${apt_arm64[@]}" download "${packages[@]}")
for package in "$work"/*.deb; do dpkg-deb -x "$package" "$sysroot"; done
echo "${packages[*]}" > "$stamp"
