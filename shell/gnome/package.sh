#!/bin/sh
# package.sh OUT_DIR: makes the extension for GNOME Shell in its two forms, from one source:
#   OUT_DIR/43/tollvane@quarnel.com    for GNOME Shell 43 and 44, where extensions are scripts
#   OUT_DIR/45/tollvane@quarnel.com    for GNOME Shell 45 to 48, where they are modules
set -eu
[ $# = 1 ] || { echo "usage: $0 OUT_DIR" >&2; exit 64; }
mkdir -p "$1"
out=$(cd "$1" && pwd)
cd "$(dirname "$0")"

# form NAME VERSIONS
form() {
  folder=$out/$1/tollvane@quarnel.com
  rm -rf "$folder"
  mkdir -p "$folder"
  cat "head-$1.js" menu.js body.js "tail-$1.js" >"$folder/extension.js"
  jq --argjson versions "$2" '. + {"shell-version": $versions}' metadata.json >"$folder/metadata.json"
  cp stylesheet.css stylesheet-light.css ../../src/platform/linux/icons/hicolor/symbolic/apps/tollvane-bell*-symbolic.svg "$folder"
}
form 43 '["43", "44"]'
mv "$folder/stylesheet-light.css" "$folder/classic.css" # what those versions call it
form 45 '["45", "46", "47", "48"]'
cp stylesheet.css "$folder/stylesheet-dark.css" # without it, the shell does not change to the light one
