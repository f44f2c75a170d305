#!/usr/bin/env bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)
source "$root/scripts/lib.sh"

usage() {
    cat <<'TEXT'
./fuzz.sh [TARGET...] [--seconds N]

Lets fuzzers look for new inputs, each for N seconds (600 unless told otherwise), one after the other, and
adds what they find to tests/fuzz/corpus. An input that fails is kept and its path printed; then nothing is
added. Without a TARGET all of them run:
TEXT
    targets | sed 's/^/  /'
}

targets() {
    sed -nE 's/^add_fuzzer\(([a-z-]+) .*/\1/p' "$root/tests/fuzz/CMakeLists.txt"
}

seconds=600
chosen=()
while (($#)); do
    case $1 in
    -h | --help)
        usage
        exit
        ;;
    --seconds)
        [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || fail "--seconds wants a number."
        seconds=$2
        shift
        ;;
    *)
        targets | grep -qxF -e "$1" || fail "There is no target $1; ./fuzz.sh --help lists them."
        chosen+=("$1")
        ;;
    esac
    shift
done
((${#chosen[@]})) || mapfile -t chosen < <(targets)

lock_build
install_packages "${fuzz_packages[@]}"
build_preset fuzz "${chosen[@]/#/fuzz-}"
unlock_build

for name in "${chosen[@]}"; do
    say "fuzzing $name for $seconds seconds"
    for kind in fresh merge; do
        "$root/tests/fuzz/fuzz-one.sh" "$kind" "$build/fuzz/bin/fuzz-$name" "$name" "$seconds"
    done
done
