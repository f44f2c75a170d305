#!/usr/bin/env bash
# Fails and shows the places when a C++ file is not laid out as .clang-format says.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/sources.sh | xargs -r -d '\n' clang-format --dry-run -Werror
