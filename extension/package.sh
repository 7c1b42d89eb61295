#!/bin/sh
# package.sh OUT_DIR: packs the extension in the forms that browsers need. The same source always gives the same bytes.
#   OUT_DIR/chromium/              for loading it unpacked
#   OUT_DIR/firefox/tollvane.xpi
#   OUT_DIR/adding.html            for people: how to add it
#   OUT_DIR/tollvane-chromium.zip  for a store, which gives the extension a key of its own and accepts no other
set -eu
[ $# = 1 ] || { echo "usage: $0 OUT_DIR" >&2; exit 64; }
mkdir -p "$1/firefox"
out=$(cd "$1" && pwd)
cd "$(dirname "$0")"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

umask 022
mkdir -p "$work/files/src" "$work/files/icons"
cp adding.html "$out/adding.html"
cp manifest.json "$work/files"
cp src/*.js src/*.html src/*.css "$work/files/src"
cp icons/*.png icons/bell.svg "$work/files/icons"
chmod -R u=rwX,go=rX "$work/files"

# archive FILE: packs all files. Their order and dates do not depend on the machine.
archive() {
  find "$work/files" -exec touch -d '2000-01-01T00:00:00Z' {} +
  rm -f "$1"
  (cd "$work/files" && find . -type f | LC_ALL=C sort | TZ=UTC zip -q -X -9 "$1" -@)
}

rm -rf "$out/chromium"
cp -R "$work/files" "$out/chromium"
# Members that Firefox does not know would each be a warning in its store.
jq 'del(.key, .minimum_chrome_version, .background.service_worker)' manifest.json >"$work/files/manifest.json"
archive "$out/firefox/tollvane.xpi"
jq 'del(.key)' manifest.json >"$work/files/manifest.json"
archive "$out/tollvane-chromium.zip"
