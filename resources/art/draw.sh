#!/bin/sh
# Draws the tool pictures from the drawings beside this script. Needs rsvg-convert; the results are
# kept, so that a build needs none of it.
set -eu
cd "$(dirname "$0")"
style=$(mktemp)
trap 'rm -f "$style"' EXIT

# draw PICTURE DRAWING MARK INK PAPER FACE: 24 x 24 points at two pixels a point
draw() {
    case $3 in
    plus) hidden=.none ;;
    minus) hidden=.vertical ;;
    none) hidden='.vertical, .horizontal' ;;
    esac
    cat >"$style" <<END
.face { fill: $6 }
.line { fill: none; stroke-linecap: round; stroke-linejoin: round }
.ink { stroke: $4 }
.paper { stroke: $5 }
.paper.filled { fill: $5 }
.paper.ink { stroke: $4 }
$hidden { display: none }
END
    rsvg-convert --width 48 --height 48 --stylesheet "$style" --output "$1.png" "$2.svg"
}

for tool in hand:none eyedropper:none magnifier:none eyedropper:plus eyedropper:minus \
    magnifier:plus magnifier:minus; do
    drawing=${tool%:*} mark=${tool#*:}
    name=$drawing
    [ "$mark" = none ] || name=$drawing-$mark
    draw "$name" "$drawing" "$mark" '#202020' '#ffffff' '#e8e8e8'
    draw "$name-selected" "$drawing" "$mark" '#ffffff' '#505050' '#303030'
done
draw eyedropper-dimmed eyedropper none '#b0b0b0' '#f0f0f0' '#e8e8e8'
draw eyedropper-dimmed-selected eyedropper none '#707070' '#484848' '#303030'
