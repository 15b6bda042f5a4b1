#!/usr/bin/env bash
# Checks that the layers include each other in one direction only. Each layer's line says what it may include; whatever
# stands in no list is a fault. The layers' own includes are written from the root, in angle brackets.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

git ls-files -- '*.h' '*.cpp' | awk '
BEGIN {
    # Prefixes of what a layer may include. "std" is any header of the standard library or of C, without an extension or
    # a folder; the others match from the start of the path.
    osg = "osg/ osgDB/ osgGA/ osgUtil/ osgViewer/ osgText/ OpenThreads/"
    allowed["gmtl_fallback"]   = "gmtl/"
    allowed["logging"]         = "logging/ log4cpp/"
    allowed["xml_parser"]      = "xml_parser/ logging/ expat.h"
    allowed["sceneutils"]      = "sceneutils/ " osg
    allowed["dynamics"]        = "dynamics/ gmtl/"
    allowed["dynamics/bullet"] = "dynamics/ xml_parser/ logging/ gmtl/ bt Bullet LinearMath/"
    allowed["agent"]           = "agent/ dynamics/ xml_parser/ logging/ sceneutils/ gmtl/ sigc++/ log4cpp/ " osg

    # Exceptions to the lines above.
    forbidden["agent"]    = "dynamics/bullet/"
    forbidden["dynamics"] = "dynamics/bullet/"
}

function startsWithOneOf(path, list,    n, i, prefixes) {
    n = split(list, prefixes, " ")
    for (i = 1; i <= n; ++i)
        if (index(path, prefixes[i]) == 1)
            return 1
    return 0
}

function layerOf(file) {
    if (file ~ /^dynamics\/bullet\//)
        return "dynamics/bullet"
    return substr(file, 1, index(file, "/") - 1)
}

function fault(file, number, text) {
    printf "%s:%d: %s\n", file, number, text
    ++faults
}

{
    file = $0
    layer = layerOf(file)
    number = 0
    while ((getline line < file) > 0) {
        ++number
        if (line !~ /^[ \t]*#[ \t]*include/)
            continue
        if (line !~ /</) {
            if (layer in allowed)
                fault(file, number, "an include in quotes; write it from the root, in angle brackets")
            continue
        }
        path = line
        sub(/^[^<]*</, "", path)
        sub(/>.*/, "", path)
        if (path ~ /^viewer\// && file !~ /^(viewer|tests\/viewer)\//)
            fault(file, number, "nothing includes the viewer")
        if (!(layer in allowed) || path ~ /^[a-z0-9_]+(\.h)?$/ && path != "expat.h" && path !~ /^bt/)
            continue
        if (startsWithOneOf(path, forbidden[layer]) || !startsWithOneOf(path, allowed[layer]))
            fault(file, number, layer "/ may not include <" path ">")
    }
    close(file)
    ++files
}

END {
    if (faults)
        exit 1
    printf "%d files keep to the layers.\n", files
}'
