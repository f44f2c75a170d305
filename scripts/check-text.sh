#!/usr/bin/env bash
# Fails and shows the places when a source holds what ours never do.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
status=0

# forbid WHY PATTERN FOLDER...
forbid() {
    local why=$1 pattern=$2 found
    shift 2
    if found=$(scripts/sources.sh "$@" | xargs -r -d '\n' grep -nHE "$pattern"); then
        printf '%s:\n%s\n' "$why" "$found"
        status=1
    fi
}

forbid 'a tab or blanks at the end of a line' $'\t|[ \r]$' .
forbid 'work left undone' '\b(TODO|FIXME|XXX|HACK)\b' .
forbid 'a test that does not run' 'GTEST_SKIP|\bDISABLED_' tests
forbid 'a test that waits on a clock' '\bsleep_(for|until)\b|\bSleep(Ex)?\(|\bu?sleep\(' tests
forbid 'a compiler extension' '__attribute__|__extension__|__typeof|__asm|\basm\b' .
exit $status
