# Shared by the commands in the root folder; they source it after setting $root.
# shellcheck shell=bash
# shellcheck disable=SC2154

# One language for every tool's output, and UTF-8 for the file names that Wine hands on.
export LC_ALL=C.UTF-8

build=$root/build
jobs=$(nproc)

packages=(
    g++ cmake ninja-build pkgconf dpkg-dev openssl
    g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine wine64
    googletest libcpp-httplib-dev libsqlitecpp-dev libsqlite3-dev libcli11-dev libjsoncpp-dev zlib1g-dev
    libssl-dev clang libclang-rt-dev clang-tidy clang-format
)
# The fuzzers need no Windows.
fuzz_packages=(g++ cmake ninja-build clang libclang-rt-dev libjsoncpp-dev zlib1g-dev libssl-dev)

say() {
    printf '== %s\n' "$*"
}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# Runs a command with its output in build/logs/NAME.log; when it fails, shows the log's end: quietly NAME COMMAND...
quietly() {
    local log=$build/logs/$1.log
    shift
    mkdir -p "$build/logs"
    if ! "$@" </dev/null >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        printf 'This failed: %s\nIts whole output is in %s\n' "$*" "$log" >&2
        return 1
    fi
}

# Two commands started at the same time would otherwise install and build over each other. A command that another one
# starts works under that one's lock.
lock_build() {
    mkdir -p "$build"
    if [[ -n ${QUORVEX_LOCKED:-} ]]; then return 0; fi
    exec 8>"$build/lock"
    flock 8
    export QUORVEX_LOCKED=1
}

unlock_build() {
    exec 8>&-
    unset QUORVEX_LOCKED
}

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    else
        sudo "$@"
    fi
}

apt_install() {
    as_root apt-get -q update || true
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y install --no-install-recommends "$@"
}

# install_packages NAME...
install_packages() {
    local missing=() name
    command -v dpkg-query >/dev/null || fail "This needs Debian or a system built on it: its packages supply the tools."
    for name in "$@"; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) == installed ]] || missing+=("$name")
    done
    ((${#missing[@]})) || return 0
    [[ $(id -u) -eq 0 ]] || command -v sudo >/dev/null ||
        fail "Packages are missing, and installing them takes root or sudo: ${missing[*]}"
    say "installing ${#missing[@]} packages: ${missing[*]}"
    quietly apt apt_install "${missing[@]}"
}

# Libraries for 64-bit Windows that are already there, in the folder that QUORVEX_PREFIX names; those for 32-bit
# Windows, in that of QUORVEX_PREFIX_I686: windows_prefix ARCH
windows_prefix() {
    if [[ $1 == x86_64 ]]; then
        printf '%s' "${QUORVEX_PREFIX:-}"
    else
        printf '%s' "${QUORVEX_PREFIX_I686:-}"
    fi
}

# supply_jsoncpp ARCH
supply_jsoncpp() {
    local prefix
    IFS=: read -ra prefix <<<"$(windows_prefix "$1")"
    for prefix in "${prefix[@]}" "$build/deps/$1"; do
        if compgen -G "$prefix/lib*/cmake/jsoncpp/*.cmake" >/dev/null; then return 0; fi
    done
    say "building JsonCpp for Windows ($1)"
    quietly "jsoncpp-$1" "$root/scripts/jsoncpp.sh" "$1"
}

# configure PRESET: only the first time, or when other libraries are asked for; ninja sees to the rest.
configure() {
    local prefix options=()
    case $1 in
    windows-x64 | coverage) prefix=$(windows_prefix x86_64) ;;
    windows-x86) prefix=$(windows_prefix i686) ;;
    *) prefix= ;;
    esac
    if [[ -n $prefix ]]; then options=("-DCMAKE_PREFIX_PATH=${prefix//:/;}"); fi
    if [[ ${#options[@]} -gt 0 || ! -e $build/$1/build.ninja ]]; then
        (cd "$root" && quietly "configure-$1" cmake --preset "$1" "${options[@]}")
    fi
}

# build_preset PRESET [TARGET...]
build_preset() {
    local preset=$1
    shift
    configure "$preset"
    if ninja -C "$build/$preset" -n "$@" 2>/dev/null | grep -q 'no work to do'; then return 0; fi
    say "building $preset"
    quietly "build-$preset" ninja -C "$build/$preset" -j "$jobs" "$@"
}

# Wine makes its folder when first used, which takes seconds that belong to no program.
prepare_wine() {
    if [[ -d $build/wine/drive_c ]]; then return 0; fi
    say "preparing Wine"
    quietly wine-start "$root/scripts/wine.sh" cmd /c exit
}

# Everything the commands need to begin with.
prepare() {
    install_packages "${packages[@]}"
    supply_jsoncpp x86_64
    prepare_wine
}

seconds_since() {
    awk -v from="$1" -v to="$EPOCHREALTIME" 'BEGIN { printf "%.2f", to - from }'
}

# 32-bit Wine that the machine has installed is used; otherwise it is unpacked under build/.
prepare_wine32() {
    local system=/usr
    if [[ ! -x /usr/lib/wine/wine ]]; then
        system=$build/i386/usr
        # The loader of 32-bit programs, in a package of the machine's own architecture.
        [[ -e /lib/ld-linux.so.2 ]] || install_packages libc6-i386
        if [[ ! -d $system ]]; then
            say "fetching 32-bit Wine (142 MB)"
            quietly wine32 "$root/scripts/wine32.sh"
        fi
    fi
    if [[ -d $build/wine32/drive_c ]]; then return 0; fi
    say "preparing 32-bit Wine"
    quietly wine32-start "$root/scripts/wine.sh" "$system/lib/i386-linux-gnu/wine/i386-windows/cmd.exe" /c exit
}

# What the 32-bit module needs besides.
prepare_x86() {
    install_packages g++-mingw-w64-i686-posix
    supply_jsoncpp i686
    prepare_wine32
}
