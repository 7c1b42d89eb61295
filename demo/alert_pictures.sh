#!/usr/bin/env bash
# usage: alert_pictures.sh OUT_DIR [BUILD_DIR]
# Draws each alert that may appear when the user goes to the source of a sound, light and dark side by side; also one at
# scale 2, and those with an endless name and an endless title.
set -euo pipefail
out=$1
probe=${2:-build/release}/tests/probes/alert_probe
mkdir -p "$out"
work=$(mktemp -d "${TMPDIR:-/tmp}/tollvane-alerts-XXXXXX")
trap 'rm -rf "$work"' EXIT

draw() {
  local name=$1 tone
  shift
  for tone in light dark; do
    QT_QPA_PLATFORM=offscreen "$probe" "$work/$tone.png" "$tone" "$@"
  done
  convert "$work/light.png" "$work/dark.png" +append -strip +dither -colors 64 "PNG8:$out/$name.png"
}

browser_closed=("Firefox is closed"
  "The tab that made this sound (Inbox) is gone because Firefox has been quit since." OK)
draw browser-closed "${browser_closed[@]}"
draw tab-closed "That tab is closed" \
  "The Firefox tab that made this sound (Inbox) has been closed, so there is nothing to go back to." OK
draw unreachable "Can't reach Firefox" \
  "The Tollvane extension in Firefox isn't responding, so the tab can't be brought forward. Check that the extension is installed and turned on." OK
draw app-closed "Music is closed" "Music made this sound but isn't open anymore." "Open Music" OK
draw background "Nothing to open" \
  "paplay is a background part of the system, so there is no window to bring forward." OK

endless=$(printf 'Example%.0s' {1..70})
draw endless "$endless is closed" "$endless made this sound but isn't open anymore." "Open $endless" OK
title=$(printf 'A <b>long</b> title & more %.0s' {1..400})
draw title "Firefox is closed" "The tab that made this sound ($title) is gone because Firefox has been quit since." OK
QT_SCALE_FACTOR=2 QT_QPA_PLATFORM=offscreen "$probe" "$work/2x.png" light "${browser_closed[@]}"
convert "$work/2x.png" -strip +dither -colors 64 "PNG8:$out/browser-closed-2x.png"
