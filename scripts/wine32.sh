#!/usr/bin/env bash
# Unpacks what 32-bit Wine consists of, Debian's packages for i386, into build/i386. They are not installed: the machine
# stays without that architecture, and nothing here takes root. The C library comes from the machine's own libc6-i386.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
work=$root/build/i386.new
apt=$work/apt
source "$root/scripts/own-apt.sh"

i386_apt() {
    own_apt -o APT::Architecture=i386 -o APT::Architectures::=i386 -o Dir::State::status="$apt/status" "$@"
}

fetch() {
    take_sources deb
    # A source without packages for i386, or with a broken list of them, is no harm as long as the others have Wine.
    i386_apt update || true
    i386_apt install -y --no-install-recommends --download-only wine32
}

unpack() {
    local package
    for package in "$apt"/cache/archives/*.deb; do
        # Another C library than the one that the loader of 32-bit programs belongs to would not work.
        if [[ $package != */libc6_* ]]; then dpkg-deb -x "$package" "$work"; fi
    done
}

# What the packages' own scripts would do at their installation: Wine takes zlib only with its mark in it.
mark_zlib() {
    local marked=$work/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll
    cp "$work/usr/i686-w64-mingw32/lib/zlib1.dll" "$marked"
    { printf 'Wine builtin DLL' && head -c 16 /dev/zero; } | dd of="$marked" bs=32 seek=2 conv=notrunc status=none
}

rm -rf "$work"
fetch
unpack
mark_zlib
rm -rf "$apt" "$root/build/i386"
mv "$work" "$root/build/i386"
