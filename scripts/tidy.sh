#!/usr/bin/env bash
# Runs clang-tidy with the checks of .clang-tidy over the sources: all of them, or those given.
#
# Usage: scripts/tidy.sh [FILE.cpp...]
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

cmake --preset debug --log-level=WARNING >/dev/null
if [ $# -gt 0 ]; then
    files=("$@")
else
    mapfile -t files < <(git ls-files -- 'agent/*.cpp' 'dynamics/*.cpp' 'xml_parser/*.cpp' 'logging/*.cpp' \
        'sceneutils/*.cpp' 'viewer/*.cpp')
fi
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet -p build/debug
echo "${#files[@]} files are tidy."
