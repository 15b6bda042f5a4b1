#!/usr/bin/env bash
# Checks an installed package: the shared libraries export what is the project's own and nothing else and miss no symbol,
# the agent library knows no physics engine, and no header asks a host for a library that is ours alone to know.
#
# Usage: scripts/check_package.sh PREFIX
set -euo pipefail
prefix=${1:?usage: scripts/check_package.sh PREFIX}

fail=0
libraries=("$prefix"/lib*/libtessarin_*.so)
[ -e "${libraries[0]}" ] || { echo "no libraries under $prefix" >&2; exit 1; }

for library in "${libraries[@]}"; do
    name=$(basename "$library")

    # Instantiations of the standard library's templates are weak and visible whatever a library asks for; types of
    # OpenSceneGraph and libsigc++ that are made from their headers carry their type information with them.
    foreign=$(nm --dynamic --defined-only --demangle "$library" | awk '{
        kind = $2
        $1 = $2 = ""
        symbol = substr($0, 3)
        if (symbol ~ /tessarin::/ || symbol ~ /^(__bss_start|_edata|_end)$/) next
        if (kind ~ /[WVu]/ && symbol ~ /(^|[ (<])(std|__gnu_cxx)::/) next
        print "  " kind " " symbol
    }')
    if [ -n "$foreign" ]; then
        echo "$name exports what is not its own:"
        echo "$foreign" | head -20
        fail=1
    fi

    undefined=$(ldd -r "$library" 2>&1 | grep -E 'undefined symbol|not found' || true)
    if [ -n "$undefined" ]; then
        echo "$name:"
        echo "$undefined" | head -20
        fail=1
    fi
done

if readelf --dynamic "$prefix"/lib*/libtessarin_agent.so | grep NEEDED | grep -iE 'bullet|LinearMath|tessarin_dynamics'; then
    echo "libtessarin_agent.so needs a physics library"
    fail=1
fi

if grep -rnE '^ *# *include <(expat|SDL|bt[A-Z]|Bullet|LinearMath)' "$prefix/include/tessarin"; then
    echo "A public header includes what stays inside the sources"
    fail=1
fi

[ $fail -eq 0 ] && echo "${#libraries[@]} libraries export their own symbols only and miss none."
exit $fail
