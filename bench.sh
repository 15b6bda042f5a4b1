#!/usr/bin/env bash
# Builds a release and measures what the library costs beside what the same work costs without it. Prints a table; the
# status is 1 if a cost is above its bound. Let nothing else run on the machine meanwhile.
#
# Usage: ./bench.sh [--no-install] [--quick] [--json FILE] [--only NAME] [--help]
#   --no-install   leave the machine's packages alone
#   --quick        fewer repetitions, and bounds that are half as strict again, for noisy machines
#   --json FILE    write all measurements to a file too
#   --only NAME    measure the rows whose names contain NAME
set -euo pipefail
called_from=$PWD
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

install=yes
options=()
while [ $# -gt 0 ]; do
    case "$1" in
        --no-install) install=no ;;
        --quick) options+=("$1") ;;
        --json) options+=(--json "$(cd "$called_from" && realpath -m "${2:?--json needs a file}")"); shift ;;
        --only) options+=(--only "${2:?--only needs a name}"); shift ;;
        --help | -h) sed -n '2,9s/^# \{0,1\}//p' bench.sh; exit 0 ;;
        *) echo "bench.sh: unknown option $1 (see --help)" >&2; exit 2 ;;
    esac
    shift
done

say() { printf '\n== %s\n' "$*"; }

if [ "$install" = yes ]; then
    say "Packages"
    scripts/install_dependencies.sh
fi

say "Build (release)"
cmake --preset release
cmake --build --preset release --target tessarin_bench

say "Measure"
build/release/bench/tessarin_bench "${options[@]}"
