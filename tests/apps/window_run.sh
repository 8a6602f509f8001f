#!/bin/bash
# Makes choices in the options dialogs with the mouse and compares the files with those that the
# command line writes for the same choices. Arguments: gif89, the samples, the dialogs' texts.
set -eu
gif89=$1 samples=$2 resources=$3
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
mkdir "$out/window" "$out/options"

fail() { echo "window run: $*" >&2; exit 1; }

# The dialog of that title, once it is there.
find_window() {
    for _ in $(seq 200); do
        window=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1) || true
        if [ -n "$window" ]; then sleep 0.3; return; fi
        sleep 0.05
    done
    fail "no window \"$1\" came up"
}

# The middle of an item as its dialog's text says, or a point of it.
point_of() { # dialog, item, [right, down from its corner]
    awk -v dialog="$1" -v item="$2" -v right="${3:-}" -v down="${4:-}" '
        $1 == "dialog" { inside = $2 == dialog }
        $1 == "}" { inside = 0 }
        inside && $1 == item {
            for (i = 1; i < NF; ++i) if ($i == "at") { x = $(i+1); y = $(i+2); w = $(i+4); h = $(i+5) }
            print int(right == "" ? x + w / 2 : x + right), int(down == "" ? y + h / 2 : y + down)
        }' "$resources"/*.r
}

click() { # dialog, item, [right, down]
    # shellcheck disable=SC2046
    xdotool mousemove --window "$window" $(point_of "$@")
    sleep 0.15
    xdotool click 1
    sleep 0.15
}

same() { cmp "$out/window/$1" "$out/options/$1" || fail "$1 differs from the command line's"; }

# Entry 3 made transparent in the colour table: the fourth cell of the first row, 11 pixels each. The
# dialog opens with what the command line says.
"$gif89" -qO "$out/window" --window --no-interlace "$samples/pixel-art.png" & job=$!
find_window "GIF89a Options"
click 16001 5 38 5
click 16001 1
wait $job || fail "OK did not write the indexed picture"
"$gif89" -qO "$out/options" --no-interlace --transparent 3 "$samples/pixel-art.png"
same pixel-art.gif

# Sixteen colours, looked at in the preview, enlarged once.
"$gif89" -qO "$out/window" --window "$samples/coast.jpg" & job=$!
find_window "GIF89a Options"
click 16000 13
xdotool key ctrl+a type 16
click 16000 17
options=$window
find_window "GIF89a Preview"
click 16002 7
click 16002 2
click 16002 1
window=$options
sleep 0.3
click 16000 1
wait $job || fail "OK did not write the RGB picture"
"$gif89" -qO "$out/options" -p adaptive -n 16 "$samples/coast.jpg"
same coast.gif

# Cancel writes nothing.
mkdir "$out/cancelled"
"$gif89" -qO "$out/cancelled" --window "$samples/pixel-art.png" 2>"$out/said" & job=$!
find_window "GIF89a Options"
click 16001 2
code=0
wait $job || code=$?
[ "$code" = 1 ] || fail "Cancel gave the exit code $code"
grep -q ": cancelled$" "$out/said" || fail "Cancel said $(cat "$out/said")"
[ -z "$(ls -A "$out/cancelled")" ] || fail "Cancel wrote something"
