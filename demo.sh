#!/usr/bin/env bash
# Builds a release and runs the sample host on a tower of bricks that is knocked over by a ball, for 300 frames: in a
# window where there is a display, else under a virtual one. Leaves a picture and the written document in build/demo/.
#
# Usage: ./demo.sh [--no-install] [--interactive] [--help]
#   --no-install   leave the machine's packages alone
#   --interactive  open the truck in a window and run until it is closed; needs a display
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

install=yes
interactive=no
for argument in "$@"; do
    case "$argument" in
        --no-install) install=no ;;
        --interactive) interactive=yes ;;
        --help | -h) sed -n '2,7s/^# \{0,1\}//p' demo.sh; exit 0 ;;
        *) echo "demo.sh: unknown option $argument (see --help)" >&2; exit 2 ;;
    esac
done

# A DISPLAY that nobody answers on is no display; without xdotool it is taken at its word.
has_display() {
    [ -n "${DISPLAY:-}" ] || return 1
    ! command -v xdotool >/dev/null || xdotool getdisplaygeometry >/dev/null 2>&1
}

say() { printf '\n== %s\n' "$*"; }

if [ "$install" = yes ]; then
    say "Packages"
    scripts/install_dependencies.sh
fi

if [ "$interactive" = yes ] && ! has_display; then
    echo "demo.sh --interactive needs a display, and there is none here: run it on a desktop, or without --interactive." >&2
    exit 1
fi

say "Build (release)"
cmake --preset release
cmake --build --preset release --target tessarin_viewer
viewer=build/release/viewer/tessarin_viewer

if [ "$interactive" = yes ]; then
    say "The truck (close the window or press Escape to end)"
    exec "$viewer" --size 1280x800 scenes/truck.xml
fi

mkdir -p build/demo
rm -f build/demo/tower.png build/demo/tower.xml
run=("$viewer" --frames 300 --size 1280x800 --snapshot build/demo/tower.png --write build/demo/tower.xml scenes/tower.xml)
if has_display; then
    say "300 frames of the tower, in a window"
    "${run[@]}"
else
    say "300 frames of the tower, under a virtual display"
    xvfb-run -a -s "-screen 0 1280x800x24" "${run[@]}"
fi

for file in build/demo/tower.png build/demo/tower.xml; do
    [ -s "$file" ] || { echo "demo.sh: the viewer left no $file" >&2; exit 1; }
done
say "Done"
echo "Picture:  $PWD/build/demo/tower.png"
echo "Document: $PWD/build/demo/tower.xml"
