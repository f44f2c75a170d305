#!/usr/bin/env bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)
source "$root/scripts/lib.sh"

usage() {
    cat <<'TEXT'
./bench.sh   Installs what is missing, builds, measures the module against a bare loop over the same
             system calls, its digests against OpenSSL, its reading of listings against the JSON
             library alone and its blocking requests against the host's session service alone, and
             writes docs/benchmarks.md. Takes some minutes; nothing else should keep the machine busy
             meanwhile.
TEXT
}

case ${1:-} in
'') ;;
-h | --help)
    usage
    exit
    ;;
*) fail "There is no option $1; ./bench.sh --help lists them." ;;
esac

report=$root/docs/benchmarks.md
folder=

leave() {
    [[ -z $folder ]] || rm -rf "$folder"
}
trap leave EXIT

machine() {
    cat <<TEXT
| | |
|---|---|
| Processor | $(lscpu | sed -nE 's/^Model name: *//p' | head -n 1), $(nproc) cores |
| Memory | $(awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo) |
| System | $(. /etc/os-release && echo "$PRETTY_NAME"), Linux $(uname -r) |
| Compilers | $(g++ --version | head -n 1); $(x86_64-w64-mingw32-g++-posix --version | head -n 1) |
| Wine | $(wine --version 2>/dev/null) |
| OpenSSL | $(openssl version) |
| Measured | $(date -u +%Y-%m-%d) |
TEXT
}

digests() {
    "$build/native/bin/digest-bench"
}

transfers() {
    "$root/scripts/wine.sh" "$build/windows-x64/bin/quorvex-bench.exe" --folder "$folder" | tr -d '\r'
}

listings() {
    "$root/scripts/wine.sh" "$build/windows-x64/bin/quorvex-listing-bench.exe" | tr -d '\r'
}

searches() {
    "$root/scripts/wine.sh" "$build/windows-x64/bin/quorvex-search-bench.exe" | tr -d '\r'
}

blocking() {
    "$root/scripts/wine.sh" "$build/windows-x64/bin/quorvex-sync-bench.exe" | tr -d '\r'
}

# What was written by hand about the figures outlives a new measurement.
notes() {
    if [[ -r $report ]]; then sed -n '/^## Notes$/,$p' "$report" | sed '1s/^/\n/'; fi
}

# section TITLE COMMAND: its output as it comes, and into the report.
section() {
    printf '\n## %s\n\n' "$1"
    "$2"
}

lock_build
prepare
build_preset windows-x64
build_preset native
unlock_build

# Files lie in memory where there is room: how a disk does from one second to the next is nobody's doing here.
scratch=$build
if [[ -w /dev/shm && $(df --output=avail -B 1G /dev/shm | tail -n 1) -ge 6 ]]; then scratch=/dev/shm; fi
folder=$(mktemp -d "$scratch/quorvex-bench.XXXXXX")
{
    printf '# Benchmarks\n\nWritten by ./bench.sh. Each ratio is of two things that were measured by turns in one run.\n\n'
    machine
    section "Digests against OpenSSL" digests
    section "The module against a bare loop over the same system calls, under Wine" transfers
    section "A folder listing read into records against the JSON library's parse, under Wine" listings
    section "The online search: user ids against the JSON library's parse, status reports against a bare loop, under Wine" searches
    section "Blocking requests against the same requests straight through the session service, under Wine" blocking
    notes
} | tee "$folder/report"
mv "$folder/report" "$report"
say "written to docs/benchmarks.md"
