#!/usr/bin/env bash
# Builds everything and runs all tests. The debug build is the default: assertions are on, those of the standard library
# included, and the compiler's warnings are errors.
#
# Usage: ./test.sh [--no-install] [--preset NAME] [--help]
#   --no-install   leave the machine's packages alone
#   --preset NAME  another preset of CMakePresets.json: release, asan (with sanitizers) or fuzz
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

install=yes
preset=debug
while [ $# -gt 0 ]; do
    case "$1" in
        --no-install) install=no ;;
        --preset) preset=${2:?--preset needs a name}; shift ;;
        --help | -h) sed -n '2,7s/^# \{0,1\}//p' test.sh; exit 0 ;;
        *) echo "test.sh: unknown option $1 (see --help)" >&2; exit 2 ;;
    esac
    shift
done

say() { printf '\n== %s\n' "$*"; }

if [ "$install" = yes ]; then
    say "Packages"
    scripts/install_dependencies.sh
fi

say "Configure, build and test ($preset)"
cmake --workflow --preset "$preset"
