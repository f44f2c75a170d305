# The tour that ./run gives; sourced by it.
# shellcheck shell=bash
# shellcheck disable=SC2154

# step ARGUMENT...: one console command, with its output and how long it took.
step() {
    local began=$EPOCHREALTIME
    printf '\n$ quorvex %s\n' "$*"
    run_console --server "$url" --user demo --password demo "$@" | tee "$folder/output" ||
        fail "This step failed."
    printf '(%s s)\n' "$(seconds_since "$began")"
}

# The value of a line "NAME  VALUE" that the last step printed.
told() {
    tr -d '\r' <"$folder/output" | sed -nE "s/^$1 +//p" | head -n 1
}

# The same bytes each time, and none that compress.
generate() {
    head -c "$(($1 << 20))" /dev/zero | openssl enc -aes-128-ctr -nosalt -K 00 -iv 00 2>/dev/null >"$2"
}

# compare ORIGINAL COPY
compare() {
    local original copy
    original=$(sha256sum <"$1")
    copy=$(sha256sum <"$2")
    printf '\nSHA-256 of %s\n  sent     %s\n  fetched  %s\n' "$(basename "$1")" "${original%% *}" "${copy%% *}"
    [[ $original == "$copy" ]] || fail "$(basename "$1") came back changed."
}

leave_tour() {
    local status=$?
    stop_services "$folder/services"
    if ((status == 0)); then
        rm -rf "$folder"
    else
        echo "What the tour used is still in $folder; services/log there is the services' log." >&2
    fi
}

# tour MEBIBYTES
tour() {
    local url readme large
    folder=$(mktemp -d "$build/tour.XXXXXX")
    trap leave_tour EXIT
    mkdir "$folder/fetched"

    say "starting the services with an empty network disk"
    start_services "$folder/services" "$folder/data"
    url=$(services_url "$folder/services")
    echo "They answer at $url; each command is given --server $url --user demo --password demo"

    say "making a file of $1 MiB"
    generate "$1" "$folder/large.bin"
    cd "$folder" || return
    cp "$root/README.md" .

    step netdisk login
    step netdisk put README.md
    readme=$(told key)
    step netdisk quota
    step netdisk put large.bin
    large=$(told key)
    step netdisk info "$large"
    step netdisk quota
    step netdisk get "$readme" --out fetched
    step netdisk get "$large" --out fetched
    compare README.md fetched/README.md
    compare large.bin fetched/large.bin
    step netdisk mv "$readme" --name about.md
    step netdisk info "$readme"
    [[ $(told name) == about.md ]] || fail "README.md was not renamed."
    step netdisk rm "$large"
    printf '\neverything came back unchanged\n'
}
