# The tour that ./run gives; sourced by it.
# shellcheck shell=bash
# shellcheck disable=SC2154

# step ARGUMENT...: one console command, with its output and how long it took. It is the account demo's, unless
# $account names another one.
step() {
    local began=$EPOCHREALTIME user=${account:-demo}
    printf '\n%s$ quorvex %s\n' "${account:+$account }" "$*"
    run_console --server "$url" --user "$user" --password "$user" "$@" | tee "$folder/output" ||
        fail "This step failed."
    printf '(%s s)\n' "$(seconds_since "$began")"
}

# The value of a line "NAME  VALUE" that the last step printed.
told() {
    tr -d '\r' <"$folder/output" | sed -nE "s/^$1 +//p" | head -n 1
}

# The id that begins the line of the last step's table where TEXT stands: id_of TEXT
id_of() {
    grep -F -- "$1" "$folder/output" | head -n 1 | cut -d ' ' -f 1
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

chapter() {
    printf '\n'
    say "$@"
}

tour_files() {
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
}

tour_folders() {
    local inner
    chapter "folders, with names in any script"
    step netdisk mkdir 文档
    documents=$(told id)
    step netdisk mkdir 'Проект 😀' --parent "$documents"
    inner=$(told id)
    step netdisk mv "$readme" --folder "$inner"
    step netdisk ls "$inner"
    [[ $(id_of about.md) == "$readme" ]] || fail "about.md is not in its folder."
    step netdisk tree
    cp "$folder/output" "$folder/tree"
}

tour_sharing() {
    local pcode saved
    chapter "sharing two files with the account guest, whose commands begin with its name"
    step netdisk share "$readme" "$large" --for 24h
    pcode=$(told pcode)
    account=guest step netdisk fetch "$pcode" --list
    account=guest step netdisk fetch "$pcode" --out guest
    compare README.md guest/about.md
    compare large.bin guest/large.bin
    account=guest step netdisk save "$pcode"
    account=guest step netdisk ls
    saved=$(id_of large.bin)
    step netdisk extend "$pcode" --by 7d
    step netdisk shares
    step netdisk unshare "$pcode"
    account=guest step netdisk get "$saved" --out guest/saved.bin
    compare large.bin guest/saved.bin
}

tour_recycle_bin() {
    chapter "the recycle bin"
    step netdisk rm --dir "$documents"
    step netdisk trash
    step netdisk restore "$(id_of 文档)"
    step netdisk tree
    cmp -s "$folder/tree" "$folder/output" || fail "The folder was not restored to what it was."
    step netdisk rm "$large"
    step netdisk trash
    step netdisk purge "$(id_of large.bin)"
    step netdisk quota
}

# tour MEBIBYTES
tour() {
    local url readme large documents
    folder=$(mktemp -d "$build/tour.XXXXXX")
    trap leave_tour EXIT
    mkdir "$folder/fetched" "$folder/guest"

    say "starting the services with an empty network disk"
    start_services "$folder/services" "$folder/data" --user guest:guest
    url=$(services_url "$folder/services")
    echo "They answer at $url; each command is given --server $url --user demo --password demo"

    say "making a file of $1 MiB"
    generate "$1" "$folder/large.bin"
    cd "$folder" || return
    cp "$root/README.md" .

    tour_files
    tour_folders
    tour_sharing
    tour_recycle_bin
    printf '\neverything came back unchanged\n'
}
