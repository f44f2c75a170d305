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

# compare ORIGINAL COPY...
compare() {
    local original copy each
    original=$(sha256sum <"$1")
    printf '\nSHA-256 of %s\n  sent     %s\n' "$(basename "$1")" "${original%% *}"
    for each in "${@:2}"; do
        copy=$(sha256sum <"$each")
        printf '  fetched  %s\n' "${copy%% *}"
        [[ $original == "$copy" ]] || fail "$(basename "$1") came back changed."
    done
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

tour_storage() {
    local uid url=${url%/object}/storage
    chapter "the shared file storage: a picture, a photo and a set of emoticons, at $url"
    head -c 300000 large.bin >sunset.png
    head -c 4000 large.bin >smile.gif
    tail -c 5000 large.bin >grin.gif
    step storage put-picture sunset.png
    account=guest step storage get-picture sunset.png --out guest
    compare sunset.png guest/sunset.png
    step storage put-photo sunset.png --name demo.png
    account=guest step storage get-photo demo.png --out guest/demo.png
    compare sunset.png guest/demo.png
    step storage emoticons put smile.gif
    step storage emoticons put grin.gif
    step storage emoticons ls --log trace --log-file module.log
    grep -F 'EmoticonGetList success, vecEmoticonList.size()=2' module.log || fail "The set has not two emoticons."
    # The account system tells the user id by which others find the set.
    url=${url%/storage}/search step search login
    uid=$(told uid)
    account=guest step storage emoticons get smile.gif --uid "$uid" --out guest
    compare smile.gif guest/smile.gif
    step storage emoticons rm smile.gif
}

tour_depot() {
    local key used url=${url%/object}/storage
    chapter "the depot, which keeps large files for a week, at $url"
    step depot info
    used=$(told used)
    step depot put large.bin
    key=$(told key)
    step depot ls
    [[ $(id_of large.bin) == "$key" ]] || fail "large.bin is not in the depot."
    step depot info "$key"
    step depot get "$key" --out depot
    compare large.bin depot/large.bin
    step depot renew "$key"
    step depot rm "$key"
    step depot info
    [[ $(told used) == "$used" ]] || fail "The depot has not given the space back."
}

# fetch_in_all FILE COMMAND...: in each generation, to be compared with the file that was sent.
fetch_in_all() {
    local generation copies=()
    for generation in 1 2 3; do
        copies+=("generations/$generation")
        step "${@:2}" --generation "$generation" --out "generations/$generation"
    done
    compare "$1" "${copies[@]}"
}

tour_generations() {
    local generation key name url=${url%/object}/storage
    chapter "the three generations of the storage's protocol, each of which fetches what each has sent"
    for generation in 1 2 3; do
        name=beach-$generation.png
        tail -c "$((generation * 100000))" large.bin >"$name"
        step storage put-picture "$name" --generation "$generation"
        fetch_in_all "$name" storage get-picture "$name"
    done
    for generation in 1 2 3; do
        name=film-$generation.mkv
        tail -c "$((generation * 3000000))" large.bin >"$name"
        step depot put "$name" --generation "$generation"
        key=$(told key)
        fetch_in_all "$name" depot get "$key"
        # The third generation cannot remove what it has sent.
        step depot rm "$key" --generation "$((generation < 2 ? 1 : 2))"
    done
}

# Whether the last step listed exactly these users: found ID...
found() {
    [[ $(tr -d '\r' <"$folder/output") == "$(printf '%s\n' "$@")" ]] || fail "The search found others."
}

tour_search() {
    local url=${url%/object}/search account ids=()
    chapter "who is online: three users, found by what they tell about themselves, at $url"
    for account in demo guest visitor; do
        step search login
        ids+=("$(told uid)")
        step search status im 1
    done
    account=demo step search update im age=27 city=巴黎
    account=guest step search update im age=31 city=巴黎
    account=visitor step search update im age=24 city=Oslo
    account=demo
    step search find im
    found "${ids[@]}"
    step search find im age=20-30
    found "${ids[0]}" "${ids[2]}"
    step search find im age=20-30 city=巴黎
    found "${ids[0]}"
    account=visitor step search status im 0
    step search count im
    [[ $(told count) == 2 ]] || fail "The user who left was counted."
}

# tour MEBIBYTES
tour() {
    local url readme large documents
    folder=$(mktemp -d "$build/tour.XXXXXX")
    trap leave_tour EXIT
    mkdir "$folder/fetched" "$folder/guest" "$folder/depot" "$folder/generations"

    say "starting the services with an empty network disk"
    start_services "$folder/services" --user guest:guest --user visitor:visitor
    url=$(services_url "$folder/services" object)
    echo "They answer at $url; each command is given --server $url --user demo --password demo"

    say "making a file of $1 MiB"
    generate "$1" "$folder/large.bin"
    cd "$folder" || return
    cp "$root/README.md" .

    tour_files
    tour_folders
    tour_sharing
    tour_recycle_bin
    tour_storage
    tour_depot
    tour_generations
    tour_search
    printf '\neverything came back unchanged\n'
}
