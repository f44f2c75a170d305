#!/usr/bin/env bash
# Fails and shows the lines when a file includes what its room may not, or a public header needs more than C++11.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
status=0

# only WHY HEADERS PLACES FOLDER...: in the folders, only files matching PLACES include HEADERS.
only() {
    local why=$1 headers=$2 places=$3 found
    shift 3
    if found=$(scripts/sources.sh "$@" | { grep -vE "$places" || true; } |
        xargs -r -d '\n' grep -nHiE "^[[:space:]]*#[[:space:]]*include[[:space:]]*[<\"]($headers)[>\"]"); then
        printf '%s:\n%s\n' "$why" "$found"
        status=1
    fi
}

none='^$'
windows='(windows|winhttp|winsock2?|ws2tcpip|winbase|fileapi|wincrypt|bcrypt)\.h'
families=(Netdisk ShareFileStorage OnlineUserSearch)

only 'only src/Platform calls the system' "$windows" '^src/Platform/' src
only 'the public headers stand alone' "$windows|ferrolink/.*|json/.*|zlib\.h|.*src/.*" "$none" include
only 'only the inflater knows zlib' 'zlib\.h' '^src/Inflate' src
only 'only the reply parsers know JsonCpp' 'json/.*' 'JsonHelper|/FileStorage3\.' src
only 'only CommonUtil and http_sync know the host library' 'ferrolink/.*' '^src/(CommonUtil|http_sync)' src
only 'CommonUtil and Platform stand below the transport' '.*(HttpHelper|http_sync)\.h' \
    '^src/(.*HttpHelper|HttpTransfer|http_sync|Netdisk/|ShareFileStorage/|OnlineUserSearch/)' src
only 'Platform stands below everything' '\.\./[^P].*|.*CommonUtil.*|ferrolink/.*' "$none" src/Platform
only 'the console uses the public headers only' '.*(src|Platform|Netdisk|CommonUtil|HttpHelper)/.*|(\.\./)+src.*' "$none" \
    host/console
only 'the host library knows nothing of the module' 'quorvex/.*|.*src/.*' "$none" host/ferrolink
only 'the services share nothing with the module' 'quorvex/.*|ferrolink/.*|.*src/.*' "$none" services
for family in "${families[@]}"; do
    others=$(printf '%s\n' "${families[@]}" | grep -vx "$family" | paste -sd '|')
    only "no client family includes another" "(.*/)?($others)/.*" "$none" "src/$family"
done

for header in include/quorvex/*.h; do
    x86_64-w64-mingw32-g++-posix -std=c++11 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -Iinclude \
        -x c++ -include "$header" /dev/null || status=1
done
exit $status
