#!/usr/bin/env bash
# Checks that the example in the README is the one in examples/minimal_host, which CI builds and runs.
#
# Usage: scripts/check_readme.sh [--update]
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

# Prints the README with the code blocks of these two languages replaced by what the files hold today; of the build file
# what stands before its test.
current() {
    awk '
    function copy(file, end,    line, gap) {
        while ((getline line < file) > 0 && line != end) {
            if (line == "") {
                gap = gap "\n"
            } else {
                print gap line
                gap = ""
            }
        }
        close(file)
    }
    /^```$/ { inside = 0 }
    !inside { print }
    /^```cpp$/ { inside = 1; copy("examples/minimal_host/main.cpp", "none") }
    /^```cmake$/ { inside = 1; copy("examples/minimal_host/CMakeLists.txt", "enable_testing()") }
    ' README.md
}

if [ "${1:-}" = --update ]; then
    current >README.md.new
    mv README.md.new README.md
elif ! diff -u README.md <(current); then
    echo "The README's example differs from examples/minimal_host: run scripts/check_readme.sh --update" >&2
    exit 1
fi
