#!/bin/sh
# package.sh OUT_DIR: puts the extension for Safari into OUT_DIR, which is the folder of resources of its bundle. The
# manifest is that of the other browsers without what Safari does not know.
set -eu
[ $# = 1 ] || { echo "usage: $0 OUT_DIR" >&2; exit 64; }
mkdir -p "$1"
out=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."

rm -rf "$out/src" "$out/icons"
mkdir -p "$out/src" "$out/icons"
cp src/*.js src/*.html src/*.css "$out/src"
cp safari/*.js "$out/src" # its background takes the place of the others'
cp icons/*.png icons/bell.svg "$out/icons"
jq 'del(.key, .minimum_chrome_version, .incognito, .background.service_worker)
  | .browser_specific_settings = {safari: {strict_min_version: "16.4"}}
  | .background.persistent = false' manifest.json >"$out/manifest.json"
