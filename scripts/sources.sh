#!/usr/bin/env bash
# Prints our C++ files, those not yet committed included, one a line: sources.sh [FOLDER...]
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# A source archive has no history to ask.
if [[ -e .git ]] && git rev-parse --git-dir >/dev/null 2>&1; then
    git ls-files --cached --others --exclude-standard -- "$@"
else
    find "${@:-.}" -path ./build -prune -o -type f -print 2>/dev/null | sed 's|^\./||'
fi | grep -E '\.(cpp|h)$' | sort -u | while read -r file; do
    # A file deleted but still in the index is none of ours any more.
    if [[ -e $file ]]; then echo "$file"; fi
done
