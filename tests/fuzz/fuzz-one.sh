#!/usr/bin/env bash
# One fuzzer: fuzz-one.sh replay|fresh|merge PROGRAM NAME [SECONDS]
#   replay  runs every input of its corpus
#   fresh   looks for new ones; they stay in the build, in the folder fuzz/NAME/fresh
#   merge   adds to the corpus what the new ones reach and it does not
# An input that fails is kept in the folder fuzz/NAME/failed beside it.
set -euo pipefail

kind=$1 program=$2 name=$3 seconds=${4:-20}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
corpus=$here/corpus/$name
work=$(cd "$(dirname "$program")/.." && pwd)/fuzz/$name
mkdir -p "$corpus" "$work/failed" "$work/fresh"

# What an input can say in more bytes it can say in fewer.
case $name in
*-replies) longest=8192 ;;
header-values) longest=1024 ;;
texts) longest=2048 ;;
*) longest=4096 ;;
esac
options=("-artifact_prefix=$work/failed/" "-dict=$here/dictionaries/$name.dict"
    -timeout=25 -rss_limit_mb=2048 "-max_len=$longest" -print_final_stats=1)

# run OPTION...: with its output in the log; shows its end when it fails, and which input that was.
run() {
    local log=$work/$kind.log
    if ! "$program" "${options[@]}" "$@" >"$log" 2>&1; then
        tail -n 60 "$log"
        sed -nE 's/^.*Test unit written to (.*)$/The input that failed is \1/p' "$log"
        return 1
    fi
    { grep -E '^(INFO: Seed|Done|MERGE-OUTER: [0-9]+ new)' "$log" || true; } | sed "s/^/$name: /"
}

case $kind in
replay)
    if [[ -z $(ls "$corpus") ]]; then
        echo "$name has no corpus"
        exit 1
    fi
    run -runs=0 "$corpus"
    ;;
# New inputs go to the first folder; the corpus stays as it is.
fresh) run "-max_total_time=$seconds" "$work/fresh" "$corpus" ;;
merge)
    rm -rf "$work/merged"
    mkdir "$work/merged"
    run -set_cover_merge=1 "$work/merged" "$corpus" "$work/fresh"
    rm -rf "$corpus" "$work/fresh"
    mv "$work/merged" "$corpus"
    ;;
esac
