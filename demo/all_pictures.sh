#!/usr/bin/env bash
# Makes all pictures of the README and of docs/:
#   all_pictures.sh SCREENSHOTS BUILD OUTPUT    SCREENSHOTS: the output of demo.sh; BUILD: for example build/release
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
screenshots=$1 build=$2 output=$3
"$here/pictures.sh" "$screenshots" "$output"
"$here/menu_pictures.sh" "$build" "$output/menu"
"$here/alert_pictures.sh" "$output/alerts" "$build"
settings=$(mktemp -d "${TMPDIR:-/tmp}/tollvane-settings-XXXXXX")
trap 'rm -rf "$settings"' EXIT
"$here/settings_pictures.sh" "$settings" "$build"
mkdir -p "$output/settings"
for scenario in welcome partly connected none note; do
  convert "$settings/settings-$scenario-light.png" "$settings/settings-$scenario-dark.png" +append +dither -colors 64 \
    "PNG8:$output/settings/$scenario.png"
done
convert "$settings/settings-welcome-light-2x.png" +dither -colors 64 "PNG8:$output/settings/welcome-2x.png"
