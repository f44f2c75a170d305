#!/usr/bin/env bash
# Fails and shows the places when the module or its host needs one certain compiler: check-portable.sh PRESET
# Another one than the compiler in use, told to be strict, reads all that the build compiles of them; ninja knows what
# has passed and has not changed since.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=$1
passed=build/portable/$preset
strict=(-fsyntax-only -pedantic-errors -Werror=gnu -Werror=microsoft -Werror=language-extension-token
    -Werror=nonportable-include-path -Wno-tautological-constant-out-of-range-compare)
status=0

# only WHY PATTERN PLACES: of the module and its host, only files matching PLACES have PATTERN.
only() {
    local found
    if found=$(scripts/sources.sh include src host | { grep -vE "$3" || true; } | xargs -r -d '\n' grep -nHE "$2"); then
        printf '%s:\n%s\n' "$1" "$found"
        status=1
    fi
}

none='^$'
only "a compiler's own word" '__(builtin_|attribute|extension__|typeof|asm|int128|PRETTY_FUNCTION__)|\balloca\b' "$none"
only "a compiler's own pragma" '#[[:space:]]*pragma[[:space:]]+(GCC|clang|comment|warning|pack)' "$none"
only 'a header that not every compiler has' \
    '#[[:space:]]*include[[:space:]]*<(x86intrin|cpuid|unistd|strings|pthread|cxxabi|alloca|(bits|sys|ext)/.*)(\.h)?>' \
    '^src/CpuFeatures\.cpp$'
only 'code for one compiler' '\b(__GNUC__|__GNUG__|__MINGW(32|64)__|__clang__|_MSC_VER)\b' '^src/CpuFeatures\.cpp$'
only "the linker's names" '__(real|wrap)_' '^src/Platform/RuntimeReserve\.cpp$'
only 'an export that is not QUORVEX_API or FERROLINK_API' '__declspec' '^(include/quorvex/Export|host/ferrolink/include/ferrolink/export)\.h$'

commands=build/$preset/compile_commands.json
if [[ ! -e $commands ]]; then
    echo "Nothing is built yet, so there is nothing to check: $preset" >&2
    exit 1
fi
triplet=$(grep -om1 '[a-z0-9_]*-w64-mingw32' "$commands")
libraries=$("$triplet-g++-posix" -E -x c++ -v /dev/null 2>&1 >/dev/null |
    sed -nE 's|^ (/.*/c\+\+.*)$|-isystem \1|p' | paste -sd ' ')
cross="clang++ --target=$triplet -nostdinc++ $libraries"

# "SOURCE OPTIONS" for each file that the build compiles: paths as seen from here, which may be anywhere; warnings and
# what only GCC knows left out.
sources() {
    local text
    text=$(<"$commands")
    text=${text//"$PWD/"/}
    sed -nE 's|^ *"command": ".*-g\+\+-posix (.*) -o [^ ]+ -c (\\")?((src\|host)/[^"\\]+\.cpp)(\\")?",?$|\3 \1|p' <<<"$text" |
        sed -E 's/\\(.)/\1/g; s/ (-W|-fno-keep-inline-dllexport|-fno-schedule-insns2|-g\b)[^ ]*//g' | sort -u -k 1,1
}

headers() {
    scripts/sources.sh include/quorvex host/ferrolink/include/ferrolink
}

# The headers whose functions are C, which another compiler's host can link as well.
c_headers() {
    headers | xargs grep -lE '^extern "C"'
}

# pass NAME COMMAND FILE: an edge of the build file.
pass() {
    printf 'build %s: pass %s\n  strict = %s\n' "$passed/$1.passed" "$3" "${2//$/$$}"
}

write_build_file() {
    local source options file
    printf 'builddir = %s\n' "$passed"
    printf 'rule pass\n  command = $strict $in -MMD -MT $out -MF $out.d && touch $out\n  depfile = $out.d\n'
    while read -r source options; do
        pass "$source" "$cross $options ${strict[*]}" "$source"
    done < <(sources)
    for file in $(headers); do
        pass "$file" "$cross -std=c++11 -Iinclude -Ihost/ferrolink/include ${strict[*]} -x c++" "$file"
    done
    for file in $(c_headers); do
        pass "$file.c" "clang --target=${triplet%%-*}-pc-windows-msvc -nostdlibinc -std=c99 ${strict[*]} -x c" "$file"
    done
}

if [[ -z $(sources) ]]; then
    echo "The build compiles nothing of the module: $preset" >&2
    exit 1
fi
mkdir -p "$passed"
write_build_file >"$passed/build.ninja"
ninja -f "$passed/build.ninja" -k 0 --quiet || status=1
exit $status
