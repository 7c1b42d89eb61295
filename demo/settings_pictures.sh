#!/usr/bin/env bash
# usage: settings_pictures.sh OUT_DIR [BUILD_DIR]
# Draws the settings window in each of its states: light, dark, and at scale 2. If it scrolls, its bottom gets a picture
# too.
set -euo pipefail
out=$1
probe=${2:-build/release}/tests/probes/settings_probe
mkdir -p "$out"

# draw NAME SCENARIO SCHEME SCALE [COMMAND]: COMMAND is one more command for settings_probe.
draw() {
  printf '%s\n' "scheme $3" "${5:-top}" show "grab $out/settings-$1.png" bottom "grab $out/settings-$1-bottom.png" quit |
    QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=$4 "$probe" "$2" >/dev/null
  # Most windows do not scroll.
  if cmp -s "$out/settings-$1.png" "$out/settings-$1-bottom.png"; then rm "$out/settings-$1-bottom.png"; fi
}

for scenario in welcome partly connected none note browsers; do
  for scheme in light dark; do
    draw "$scenario-$scheme" "$scenario" "$scheme" 1
  done
  draw "$scenario-light-2x" "$scenario" light 2
done
draw browsers-dark-2x browsers dark 2
draw translated-light translated light 1 'font 14 DejaVu Sans'
