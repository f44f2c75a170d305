#!/usr/bin/env bash
# clang-tidy over what the given builds have compiled of the module, its host and the services (tests and
# benchmarks have the compilers' warnings): check-tidy.sh ROOMS PRESET..., ROOMS being folders parted by "|".
# A file that passed is checked again only when it, a header of ours that it includes, or the rules change.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
rooms=$1
shift
export passed=build/tidy
# The public headers are for C++11 readers and have a check of their own.
here=$(sed 's/[][\.*^$+?(){}|]/\\&/g' <<<"$PWD")
export our_headers="^$here/(src|host/console|host/ferrolink/src|services)/"
rules=$(cat .clang-tidy scripts/check-tidy.sh <(clang-tidy --version) | sha256sum)

# A cross compiler's target and C++ library, with clang's own intrinsics; one option a line.
cross_options() {
    local triplet
    triplet=$(grep -om1 '[a-z0-9_]*-w64-mingw32' "build/$1/compile_commands.json") || return 0
    printf '%s\n' "--extra-arg-before=--target=$triplet" --extra-arg=-nostdinc++
    "$triplet-g++-posix" -E -x c++ -v /dev/null 2>&1 >/dev/null |
        sed -nE 's|^ (/.*/c\+\+.*)$|--extra-arg=-isystem\1|p'
}
export -f cross_options

# "SOURCE HASH" for each file that a build compiled, the hash over it and all that it includes of ours.
sources_of() {
    ninja -C "build/$1" -t deps | awk -v here="    $PWD/" -v build="    $PWD/build/" '
        /^[^ ]/ { if (line != "") print line; line = "" }
        index($0, here) == 1 && index($0, build) != 1 { line = line " " substr($0, length(here) + 1) }
        END { if (line != "") print line }' | grep -E "^ ($rooms)/" | sort -u | while read -r source headers; do
        # shellcheck disable=SC2086
        printf '%s %s\n' "$source" "$({ echo "$rules"; sha256sum "$source" $headers; } | sha256sum | cut -c1-64)"
    done
}

# clang does not know each of GCC's options.
write_commands() {
    mkdir -p "$passed/$1"
    sed -E 's/ -fno-(keep-inline-dllexport|schedule-insns2)\b//' "build/$1/compile_commands.json" >"$passed/$1/compile_commands.json"
}

# check PRESET SOURCE HASH
check() {
    local options
    mapfile -t options < <(cross_options "$1")
    # Compiler warnings are the compilers' business.
    if clang-tidy --quiet -p "$passed/$1" --header-filter="$our_headers" "${options[@]}" --extra-arg=-Wno-error \
        "$2" 2>/dev/null; then
        touch "$passed/$3"
    else
        echo "clang-tidy ($1): $2"
        return 1
    fi
}
export -f check

mkdir -p "$passed"
work=$(mktemp "$passed/work.XXXXXX")
trap 'rm -f "$work"' EXIT
declare -A seen=()
for preset in "$@"; do
    write_commands "$preset"
    while read -r source hash; do
        # What two builds compile is checked in the first one.
        if [[ -z ${seen[$source]:-} && ! -e $passed/$hash ]]; then echo "$preset $source $hash"; fi
        seen[$source]=1
    done < <(sources_of "$preset") >>"$work"
done
if ((${#seen[@]} == 0)); then
    echo "Nothing is built yet, so there is nothing to check: $*" >&2
    exit 1
fi
xargs -r -L 1 -P "$(nproc)" -a "$work" bash -c 'check "$@"' check
