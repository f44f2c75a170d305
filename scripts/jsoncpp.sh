#!/usr/bin/env bash
# Builds JsonCpp for Windows from Debian's source package into build/deps/ARCH: jsoncpp.sh [x86_64|i686]
set -euo pipefail

arch=${1:-x86_64}
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
work=$root/build/jsoncpp
prefix=$root/build/deps/$arch
apt=$work/apt
source "$root/scripts/own-apt.sh"

# Unpacked beside its place and then moved there, so that an interrupted download is not taken for a whole one.
fetch() {
    local unpacked=$work/unpacked
    take_sources deb-src
    # A source without source packages is no harm as long as one of them has this package.
    own_apt update || true
    rm -rf "$unpacked"
    mkdir -p "$unpacked"
    (cd "$unpacked" && own_apt source --only-source libjsoncpp)
    mv "$unpacked"/libjsoncpp-*/ "$work/source"
}

[[ -d $work/source ]] || fetch
cmake -G Ninja -S "$work/source" -B "$work/$arch" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR="$arch" \
    -DCMAKE_CXX_COMPILER="$arch-w64-mingw32-g++-posix" -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DBUILD_SHARED_LIBS=OFF -DBUILD_OBJECT_LIBS=OFF \
    -DJSONCPP_WITH_TESTS=OFF -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF
cmake --build "$work/$arch" --target install
