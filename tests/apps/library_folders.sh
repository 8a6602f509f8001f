#!/bin/sh
# library_folders.sh BUILD: no linked file may look for libraries in the current folder, which an
# empty or relative element of its search path would mean.
set -eu
find "$1" -type f -perm -u+x -exec readelf -d {} + 2>/dev/null | awk '
    /^File: / { file = $2 }
    /\((RPATH|RUNPATH)\)/ {
        paths++
        if (/\[(\$ORIGIN|\/)[^:]*(:(\$ORIGIN|\/)[^:]*)*\]$/) next
        print file ": " $0 ", expected only elements that begin with $ORIGIN or /"
        bad = 1
    }
    END { exit bad || !paths }'
