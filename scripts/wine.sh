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

# Now and then a randomised address space has something else where Windows keeps its shared data, and
# Wine gives up without a word (once in some thousand starts). Where it is allowed, Wine therefore runs
# with a plain one.
run_plain=()
if setarch -R true 2>/dev/null; then run_plain=(setarch -R); fi

start_server
exec "${run_plain[@]}" wine "$@"
