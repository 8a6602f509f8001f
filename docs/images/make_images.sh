#!/bin/sh
# Draws the pictures of the window that the documents show, on a screen in memory.
# Usage: make_images.sh gif89-desktop samples
# Needs xvfb, xdotool and ImageMagick's import.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
if [ "${3:-}" != inside ]; then
    exec xvfb-run -a -s "-screen 0 1000x680x24" "$0" "$1" "$2" inside
fi
work=$(mktemp -d)
trap 'kill $window; rm -rf "$work"' EXIT
cp "$2/icon-soft-alpha.png" "$work"
HOME=$work XDG_CONFIG_HOME=$work/config "$1" "$work/icon-soft-alpha.png" & window=$!
sleep 2
xdotool key ctrl+0
sleep 0.5
/usr/bin/import -window root "$here/desktop-picture.png"
xdotool key ctrl+shift+e
sleep 1
xdotool key Return # the proposed name
sleep 1.5
xdotool key Return # the options as they come; then the remark goes
sleep 7
/usr/bin/import -window root "$here/desktop-compare.png"
