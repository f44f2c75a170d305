# Starting and stopping quorvex-services; sourced after lib.sh. A running one is known by its state
# folder, which holds its process id, its port and its log.
# shellcheck shell=bash
# shellcheck disable=SC2154

services=$build/native/bin/quorvex-services

# services_running STATE
services_running() {
    local pid
    [[ -r $1/pid ]] && pid=$(<"$1/pid") || return 1
    # The number may belong to another program by now.
    [[ $(readlink "/proc/$pid/exe" 2>/dev/null) == "$services"* ]]
}

# start_services STATE DATA [OPTION...]: returns once they answer.
start_services() {
    local ready line
    mkdir -p "$1" "$2"
    # A session of their own, so that a Ctrl-C meant for a command does not end them.
    exec {ready}< <(exec setsid "$services" --data "$2" --port 0 --user demo:demo "${@:3}" </dev/null 2>"$1/log" 8>&-)
    echo $! >"$1/pid"
    if ! read -r -t 60 line <&"$ready" || [[ ! $line =~ http://[^/]*:([0-9]+)/ ]]; then
        tail -n 20 "$1/log" >&2
        rm -f "$1/pid"
        fail "The services did not start; their log is $1/log"
    fi
    exec {ready}<&-
    echo "${BASH_REMATCH[1]}" >"$1/port"
}

# stop_services STATE
stop_services() {
    local pid
    services_running "$1" || return 0
    pid=$(<"$1/pid")
    kill "$pid"
    timeout 30 tail --pid="$pid" -s 0.05 -f /dev/null || kill -KILL "$pid"
    rm -f "$1/pid" "$1/port"
}

# services_url STATE SERVICE: the address of object (the network disk), storage or search
services_url() {
    printf 'http://127.0.0.1:%s/%s' "$(<"$1/port")" "$2"
}
