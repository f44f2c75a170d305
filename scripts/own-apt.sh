# apt with package sources, lists and a cache of its own; sourced after setting $apt to the folder for them.
# The machine's keys, proxies and preferences still hold, and its own lists and packages stay as they are.
# shellcheck shell=bash
# shellcheck disable=SC2154

# take_sources KIND: the machine's own package sources, in either of apt's two forms, as entries of KIND (deb,
# deb-src) that are not limited to its own architecture
take_sources() {
    local entries=$apt/sources file
    rm -rf "$entries"
    mkdir -p "$entries" "$apt/lists/partial" "$apt/cache/archives/partial"
    : >"$apt/status"
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        if [[ -r $file ]]; then
            sed -nE "s/^[[:space:]]*deb[[:space:]]/$1 /p" "$file" | sed -E 's/\barch=[^] ]*//; s/\[ *\]//'
        fi
    done >"$entries/machine.list"
    for file in /etc/apt/sources.list.d/*.sources; do
        if [[ -r $file ]]; then
            sed -E "s/^Types:.*/Types: $1/; /^Architectures:/d" "$file" >"$entries/$(basename "$file")"
        fi
    done
}

own_apt() {
    apt-get -q -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$apt/sources" \
        -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache" \
        -o APT::Sandbox::User="$(id -un)" "$@"
}
