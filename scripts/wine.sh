#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of the project's own: wine.sh PROGRAM [ARGUMENT...]
set -euo pipefail

build=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build
export WINEPREFIX=$build/wine WINEDEBUG=-all
# No dialogs that offer to download things, and no menu entries in the user's home folder.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
# Arguments and file names in any script.
export LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY WINEARCH WINESERVER WINELOADER

# Wine's background processes inherit the output of whichever program starts them and live on after
# it, so that a reader of that output would wait for them too. They are therefore started here, with
# no output at all; they leave by themselves half a minute after the last program.
start_server() {
    mkdir -p "$WINEPREFIX" "$build/logs"
    exec 9>"$build/wine.lock"
    flock 9
    if wineserver -p30 </dev/null >/dev/null 2>&1 9>&-; then
        if ! wine cmd /c exit </dev/null >"$build/logs/wine.log" 2>&1 9>&-; then
            echo "Wine does not start; see $build/logs/wine.log" >&2
            exit 1
        fi
    fi
    exec 9>&-
}

start_server
exec wine "$@"
