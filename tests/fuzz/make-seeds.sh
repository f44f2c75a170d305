#!/usr/bin/env bash
# Adds to each corpus what the services answer today and it does not know yet. Needs the presets native and fuzz.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
native=${1:-$root/build/native} fuzz=${2:-$root/build/fuzz}
cmake --build "$native" --target fuzz-seeds

seeds=$(mktemp -d)
trap 'rm -rf "$seeds"' EXIT
QUORVEX_SEEDS=$seeds "$native/bin/fuzz-seeds" --gtest_brief=1
for folder in "$seeds"/*/; do
    name=$(basename "$folder")
    mkdir -p "$root/tests/fuzz/corpus/$name"
    before=$(find "$root/tests/fuzz/corpus/$name" -type f | wc -l)
    "$fuzz/bin/fuzz-$name" -merge=1 "$root/tests/fuzz/corpus/$name" "$folder" 2>"$seeds/log" || {
        tail -n 60 "$seeds/log"
        exit 1
    }
    after=$(find "$root/tests/fuzz/corpus/$name" -type f | wc -l)
    echo "$name: $((after - before)) new inputs"
done
