#!/usr/bin/env bash
# Installs the Debian packages with which this project is built, tested and run. This is the one list of them.
# Nothing is downloaded when all of them are there already.
#
# Usage: scripts/install_dependencies.sh [--list] [--help]
set -euo pipefail

packages=(
    # Compilers and tools of the build
    g++ clang libclang-rt-14-dev cmake ninja-build ccache pkg-config git ca-certificates
    clang-format clang-tidy
    # What the libraries and the viewer are made with
    libopenscenegraph-dev libsigc++-2.0-dev liblog4cpp5-dev libexpat1-dev libbullet-dev libsdl2-dev libx11-dev
    # Tests and benchmarks
    libgtest-dev libgmock-dev libbenchmark-dev
    # A display for machines without one, with a software renderer; events for its windows
    xvfb xauth xdotool libgl1-mesa-dri
    # Letters for the texts of the viewer
    fonts-dejavu-core
)

case "${1:-}" in
    --list) printf '%s\n' "${packages[@]}"; exit 0 ;;
    --help | -h) sed -n '2,5s/^# \{0,1\}//p' "$0"; exit 0 ;;
    "") ;;
    *) echo "$0: unknown option $1 (see --help)" >&2; exit 2 ;;
esac

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "This machine has no apt-get. Install what stands for these Debian packages, then use --no-install:" >&2
    printf '  %s\n' "${packages[*]}" >&2
    exit 1
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "All ${#packages[@]} Debian packages are installed."
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "Packages are missing, and neither root's rights nor sudo are there to install them: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
apt_get() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 "$@" </dev/null; }

echo "Installing ${#missing[@]} Debian packages: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { apt_get update && apt_get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    cat "$log" >&2
    echo "apt-get failed; its output stands above." >&2
    exit 1
fi
echo "Installed."
