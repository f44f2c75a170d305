#!/usr/bin/env bash
# One case of the starting and stopping of the services: services.sh PROGRAM SCRIPTS CASE
set -euo pipefail

program=$1
scripts=$2
root=$(mktemp -d)
state=$root/build/state
mkdir -p "$root/build/native/bin"
ln -s "$program" "$root/build/native/bin/quorvex-services"
source "$scripts/lib.sh"
source "$scripts/services.sh"
started=()

leave() {
    local pid
    for pid in "${started[@]}"; do end_process "$pid"; done
    rm -rf "$root"
}
trap leave EXIT

start() {
    start_services "$state" --quiet
    started+=("$(<"$state/pid")")
}

# answered STATE: the status of a request without a login
answered() {
    local line connection
    exec {connection}<>"/dev/tcp/127.0.0.1/$(<"$1/port")"
    printf 'GET /object/capacity/info HTTP/1.0\r\n\r\n' >&"$connection"
    read -r line <&"$connection"
    exec {connection}>&-
    [[ $line == "HTTP/1.1 403 "* ]]
}

expect() {
    "$@" || fail "expected: $*"
}

refuse() {
    if "$@"; then fail "expected otherwise: $*"; fi
}

is_alive() {
    kill -0 "$1" 2>/dev/null
}

case_start_and_stop() {
    refuse services_running "$state"
    start
    expect services_running "$state"
    expect answered "$state"
    expect test "$(services_url "$state" search)" = "http://127.0.0.1:$(<"$state/port")/search"
    stop_services "$state"
    refuse services_running "$state"
    refuse is_alive "${started[0]}"
    stop_services "$state"
}

case_built_anew() {
    rm "$root/build/native/bin/quorvex-services"
    cp "$program" "$root/build/native/bin/quorvex-services"
    start
    refuse services_outdated "$state"
    rm "$root/build/native/bin/quorvex-services"
    cp "$program" "$root/build/native/bin/quorvex-services"
    expect services_running "$state"
    expect services_outdated "$state"
}

case_same_port_again() {
    local port
    start
    port=$(<"$state/port")
    stop_services "$state"
    start
    expect test "$(<"$state/port")" = "$port"
}

case_same_port_after_a_kill() {
    local port
    start
    port=$(<"$state/port")
    kill -KILL "${started[0]}"
    timeout 30 tail --pid="${started[0]}" -s 0.05 -f /dev/null
    refuse services_running "$state"
    start
    expect test "$(<"$state/port")" = "$port"
}

case_another_port_when_taken() {
    local other=$root/build/other port
    start
    port=$(<"$state/port")
    mkdir -p "$other"
    echo "$port" >"$other/port"
    start_services "$other" --quiet
    started+=("$(<"$other/pid")")
    refuse test "$(<"$other/port")" = "$port"
    expect answered "$state"
    expect answered "$other"
}

# A number that outlived its process may be another one's.
case_stale_number() {
    local other=$root/build/other
    start
    mkdir -p "$other"
    cp "$state/pid" "$other/pid"
    refuse services_running "$other"
    stop_services "$other"
    expect services_running "$state"
    echo $$ >"$other/pid"
    refuse services_running "$other"
    echo 99999999 >"$other/pid"
    refuse services_running "$other"
}

case_no_start() {
    mkdir -p "$state/data"
    echo precious >"$state/data/letter"
    if (start_services "$state" --quiet) 2>"$root/said"; then fail "They started in a foreign folder."; fi
    expect grep -qF "The services did not start; their log is $state/log" "$root/said"
    expect grep -qF "holds something else" "$root/said"
    refuse test -e "$state/pid"
    expect test "$(<"$state/data/letter")" = precious
}

"case_$3"
