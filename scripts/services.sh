# Starting and stopping quorvex-services; sourced after lib.sh. A running one is known by its state
# folder, which holds its process id, its port, its log and its data.
# shellcheck shell=bash
# shellcheck disable=SC2154

services=$build/native/bin/quorvex-services

# services_running STATE
services_running() {
    local pid
    [[ -r $1/pid ]] && pid=$(<"$1/pid") || return 1
    # The number may belong to another program by now, even to other services.
    [[ $(tr '\0' ' ' 2>/dev/null <"/proc/$pid/cmdline") == "$services --data $1/data "* ]]
}

# Whether their program has been built anew since they were started: services_outdated STATE
services_outdated() {
    [[ $(readlink "/proc/$(<"$1/pid")/exe") == *' (deleted)' ]]
}

# end_process PID: returns when it has ended.
end_process() {
    kill "$1" 2>/dev/null || return 0
    timeout 30 tail --pid="$1" -s 0.05 -f /dev/null || kill -KILL "$1"
}

# try_services STATE PORT [OPTION...]: fails when they do not answer.
try_services() {
    local ready line pid
    # A session of their own, so that a Ctrl-C meant for a command does not end them.
    exec {ready}< <(exec setsid "$services" --data "$1/data" --port "$2" --user demo:demo "${@:3}" \
        </dev/null 2>"$1/log" 8>&-)
    pid=$!
    if ! read -r -t 60 line <&"$ready" || [[ ! $line =~ http://[^/]*:([0-9]+)/ ]]; then
        end_process "$pid"
        return 1
    fi
    exec {ready}<&-
    echo "$pid" >"$1/pid"
    echo "${BASH_REMATCH[1]}" >"$1/port"
}

# start_services STATE [OPTION...]: returns once they answer. They come back under the port that they had, where an
# interrupted upload looks for what they hold of it.
start_services() {
    mkdir -p "$1/data"
    if [[ -r $1/port ]] && try_services "$1" "$(<"$1/port")" "${@:2}"; then return 0; fi
    if try_services "$1" 0 "${@:2}"; then return 0; fi
    tail -n 20 "$1/log" >&2
    fail "The services did not start; their log is $1/log"
}

# stop_services STATE
stop_services() {
    services_running "$1" || return 0
    end_process "$(<"$1/pid")"
    rm -f "$1/pid"
}

# services_url STATE SERVICE: the address of object (the network disk), storage or search
services_url() {
    printf 'http://127.0.0.1:%s/%s' "$(<"$1/port")" "$2"
}
