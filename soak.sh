#!/usr/bin/env bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)
source "$root/scripts/lib.sh"

usage() {
    cat <<'TEXT'
./soak.sh [--operations N] [--seed S] [--threads T]

Installs what is missing, builds, and has the Windows module perform N operations of all its classes
(20000 unless told otherwise; 1000 at least) against the services, while requests are refused, reset,
delayed and cut short and the services are killed again and again. Then it compares everything that
was acknowledged with what is there, and handles and memory with those after the first thousand
operations. Takes some minutes; the exit status says whether all held.

  --operations N   operations to perform
  --seed S         what the choices are made from; another one each time unless given
  --threads T      threads, each with clients and accounts of its own (4)
  --log FILE       keeps the module's whole log
TEXT
}

for argument in "$@"; do
    case $argument in
    -h | --help)
        usage
        exit
        ;;
    esac
done

lock_build
prepare
build_preset windows-x64 soak-worker
build_preset native soak
unlock_build

exec "$build/native/bin/soak" "$@"
