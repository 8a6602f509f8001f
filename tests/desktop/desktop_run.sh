#!/bin/bash
# Opens a picture in the window and exports it with the mouse; the file must be the command line's.
# Arguments: gif89-desktop, gif89, the samples, the dialogs' texts.
set -eu
desktop=$1 gif89=$2 samples=$3 resources=$4
out=$(mktemp -d)
job=
trap '[ -z "$job" ] || kill "$job" 2>/dev/null; rm -rf "$out"' EXIT
export XDG_CONFIG_HOME=$out/config
mkdir "$out/config" "$out/options"

fail() { echo "desktop run: $*" >&2; exit 1; }

# The window of that title, once it is there and has the keys.
find_window() {
    for _ in $(seq 200); do
        window=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1) || true
        if [ -n "$window" ] && [ "$(xdotool getwindowfocus 2>/dev/null)" = "$window" ]; then
            sleep 0.4
            return
        fi
        sleep 0.05
    done
    fail "no window \"$1\" came up"
}

# Presses the middle of an item, as its dialog's text places it.
click() { # dialog, item
    # shellcheck disable=SC2046
    xdotool mousemove --window "$window" $(awk -v dialog="$1" -v item="$2" '
        $1 == "dialog" { inside = $2 == dialog }
        $1 == "}" { inside = 0 }
        inside && $1 == item {
            for (i = 1; i < NF; ++i) if ($i == "at") { x = $(i+1); y = $(i+2); w = $(i+4); h = $(i+5) }
            print int(x + w / 2), int(y + h / 2)
        }' "$resources"/*.r)
    sleep 0.15
    xdotool click 1
    sleep 0.15
}

wait_for_file() {
    for _ in $(seq 200); do
        [ -s "$1" ] && return
        sleep 0.05
    done
    fail "$1 was not written"
}

cp "$samples/coast.jpg" "$samples/badge-palette.png" "$out"

# Sixteen colours, chosen with the mouse; then once more without any dialog.
"$desktop" "$out/coast.jpg" & job=$!
find_window "coast.jpg — GIF89 Export"
main=$window
xdotool key ctrl+shift+e
find_window "Export As GIF"
xdotool key Return
find_window "GIF89a Options"
click 16000 13
xdotool key ctrl+a type 16
click 16000 1
wait_for_file "$out/coast.gif"
"$gif89" -qO "$out/options" -p adaptive -n 16 "$samples/coast.jpg"
cmp "$out/coast.gif" "$out/options/coast.gif" || fail "coast.gif differs from the command line's"
rm "$out/coast.gif"
window=$main
xdotool mousemove --window "$window" 200 300
sleep 0.3
xdotool key ctrl+e
wait_for_file "$out/coast.gif"
cmp "$out/coast.gif" "$out/options/coast.gif" || fail "the second coast.gif differs"
kill "$job"
wait "$job" || true

# The picture's own transparency is kept by pressing nothing but OK.
"$desktop" "$out/badge-palette.png" & job=$!
find_window "badge-palette.png — GIF89 Export"
xdotool key ctrl+shift+e
find_window "Export As GIF"
xdotool key Return
find_window "GIF89a Options"
click 16001 1
wait_for_file "$out/badge-palette.gif"
"$gif89" -qO "$out/options" "$samples/badge-palette.png"
cmp "$out/badge-palette.gif" "$out/options/badge-palette.gif" || fail "badge-palette.gif differs"
