#!/usr/bin/env bash
# Runs a test program of the preset "coverage" under Wine: counted.sh PROGRAM [ARGUMENT...]
# What it counts is added up below build/coverage/counts. Under Wine two programs cannot share one set of counts, so
# each takes a set that no other uses.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
counts=$root/build/coverage/counts
mkdir -p "$counts"
slot=1
while
    exec 7>"$counts/$slot.lock"
    ! flock -n 7
do
    slot=$((slot + 1))
done
# The set's folder takes the place of the folders that lead to the build.
GCOV_PREFIX=$counts/$slot GCOV_PREFIX_STRIP=$(tr -dc / <<<"$root/build/coverage" | wc -c) \
    "$root/scripts/wine.sh" "$@" 7>&-
