#!/usr/bin/env bash
# Compiles every source and test, without building anything, against headers that behave as an installed GMTL does:
# there, sums and products of vectors are expressions. Usage: scripts/check_gmtl.sh
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

folder=build/gmtl
cmake -S . -B "$folder" -G Ninja --log-level=WARNING -DCMAKE_CXX_FLAGS=-Werror -DTESSARIN_BUILD_BENCHMARKS=ON \
    -DCMAKE_CXX_COMPILER_LAUNCHER= -DGMTL_INCLUDE_DIR="$PWD/tests/gmtl_standin;$PWD/gmtl_fallback"
cd "$folder"
ninja -t commands | sed -n 's/ -MD .* -o [^ ]* -c / -fsyntax-only /p' >commands.txt
grep -c . commands.txt
xargs -d '\n' -P "${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" -I{} sh -c '{}' <commands.txt
