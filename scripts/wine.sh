#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of the project's own: wine.sh PROGRAM [ARGUMENT...]
# A 32-bit program needs 32-bit Wine, the machine's own or the one in build/i386, and has a prefix for itself.
set -euo pipefail

build=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)/build
# The lock of the command that runs this would be kept by Wine's background processes.
exec 8>&-
# No dialogs that offer to download things, and no menu entries in the user's home folder.
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
# Arguments and file names in any script.
export LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY WINEARCH WINESERVER WINELOADER
# The way to the package archives; Wine would send what is meant for this machine that way, too.
unset http_proxy HTTP_PROXY

# Whether a program's header says so; what is no file is a program of Wine's own.
is_32_bit() {
    local header
    [[ -f $1 ]] && header=$(od -An -tu4 -j60 -N4 "$1") && [[ $(od -An -tx2 -j$((header + 4)) -N2 "$1") == *014c ]]
}

use_64_bit() {
    export WINEPREFIX=$build/wine
    loader=wine
    server=wineserver
    # Where 32-bit Wine is installed, too, plain "wine" is that one, which has no business in this prefix.
    if [[ -x /usr/lib/wine/wine64 ]]; then
        loader=/usr/lib/wine/wine64
        export WINELOADER=$loader
    fi
}

use_32_bit() {
    local home=/usr/lib/wine
    if [[ ! -x $home/wine ]]; then
        home=$build/i386/usr/lib/wine
        export LD_LIBRARY_PATH=$build/i386/usr/lib/i386-linux-gnu:$build/i386/lib/i386-linux-gnu
    fi
    export WINEPREFIX=$build/wine32 WINEARCH=win32 WINESERVER=$home/wineserver32
    loader=$home/wine
    server=$WINESERVER
    if [[ ! -x $loader ]]; then
        echo "32-bit programs need 32-bit Wine, which ./test --x86 provides: $1" >&2
        exit 1
    fi
}

# Wine's background processes inherit the output of whichever program starts them and live on after
# it, so that a reader of that output would wait for them too. They are therefore started here, with
# no output at all; they leave by themselves half a minute after the last program.
start_server() {
    local log=$build/logs/${WINEPREFIX##*/}.log
    mkdir -p "$WINEPREFIX" "$build/logs"
    exec 9>"$WINEPREFIX.lock"
    flock 9
    if "$server" -p30 </dev/null >/dev/null 2>&1 9>&-; then
        if ! "$loader" cmd /c exit </dev/null >"$log" 2>&1 9>&-; then
            echo "Wine does not start; see $log" >&2
            exit 1
        fi
    fi
    exec 9>&-
}

# Now and then a randomised address space has something else where Windows keeps its shared data, and
# Wine gives up without a word (once in some thousand starts). Where it is allowed, Wine therefore runs
# with a plain one.
run_plain=()
if setarch -R true 2>/dev/null; then run_plain=(setarch -R); fi

if is_32_bit "${1:-}"; then use_32_bit "$1"; else use_64_bit; fi
start_server
exec "${run_plain[@]}" "$loader" "$@"
