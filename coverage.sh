#!/usr/bin/env bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)
source "$root/scripts/lib.sh"

usage() {
    cat <<'TEXT'
./coverage.sh   Installs what is missing, builds the module so that it counts which of its branches are
                taken, runs the wire, fault and unit tests under Wine, prints a table and writes pages
                that show each line: build/coverage/report/index.html. Fails when a branch was not
                taken that tests/coverage-exclusions.txt does not explain. Takes about ten minutes.
TEXT
}

case ${1:-} in
'') ;;
-h | --help)
    usage
    exit
    ;;
*) fail "There is no option $1; ./coverage.sh --help lists them." ;;
esac

report=$build/coverage/report

lock_build
prepare
install_packages gcovr
build_preset coverage
# Building runs the tests, too, to learn their names.
rm -rf "$build/coverage/counts"

# Whole programs in a few pieces each: nearly a thousand processes that each add to the counts would take longer. The
# pieces wait for answers most of the time, so that there may be more of them than processors.
export GTEST_TOTAL_SHARDS=4
pieces() {
    local program shard
    for program in fault-test wire-test "wire-test --silent" fault-cases-test "fault-cases-test --silent" \
        reserve-test transport-test unit-test; do
        for ((shard = 0; shard < GTEST_TOTAL_SHARDS; shard++)); do
            echo "$shard $program"
        done
    done
}

# run_piece SHARD PROGRAM [ARGUMENT]
run_piece() {
    quietly "coverage-$2${3:-}-$1" env GTEST_SHARD_INDEX="$1" timeout 1800 \
        "$root/scripts/counted.sh" "$build/coverage/bin/$2.exe" --gtest_brief=1 "${@:3}"
}
export root build
export -f quietly run_piece

say "testing"
status=0
pieces | xargs -P $((2 * jobs)) -L 1 bash -c 'run_piece "$@"' run_piece || status=1

say "reporting"
rm -rf "$report"
mkdir -p "$report"
"$root/scripts/coverage-report.py" "$build/coverage" "$report/branches.json" || status=1
(cd "$root" && quietly report-coverage gcovr --add-tracefile "$report/branches.json" --root . \
    --html-details "$report/index.html" --html-title "quorvex")
echo "each line: $report/index.html"
exit $status
