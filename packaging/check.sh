#!/usr/bin/env bash
# check.sh PACKAGES: checks what package.sh has made: the Debian package with lintian, its desktop entry, its AppStream
# metadata, its manual pages and its size. Ends with 1 if anything is wrong; every warning counts.
set -euo pipefail
[ $# = 1 ] || { echo "usage: check.sh PACKAGES" >&2; exit 64; }
packaging=$(cd "$(dirname "$0")" && pwd)
cd "$1"

wrong=0
check() {
  echo "checking: $1"
  shift
  "$@" || wrong=1
}

package=$(echo tollvane_*.deb)
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
dpkg-deb -x "$package" "$root"

check lintian lintian --fail-on error,warning --tag-display-limit 0 "$package"
check "the desktop entry" desktop-file-validate "$root/usr/share/applications/tollvane.desktop"
metadata=$root/usr/share/metainfo/com.quarnel.tollvane.metainfo.xml
# A build without a real site has no home page, of which AppStream 1.0 warns.
without_page=()
if ! grep -q '"homepage"' "$metadata" && grep -q '<developer ' "$metadata"; then
  without_page=(--override=url-homepage-missing=info)
fi
check "the AppStream metadata" appstreamcli validate --pedantic --no-net "${without_page[@]}" "$metadata"
# The form that a build with a site of its own has.
developer=$(grep -o '<developer.*' "$metadata")
sed "s|@SITE@|https://www.example.org|; s|@DEVELOPER@|$developer|"'; s|@RELEASES@|<release version="1.0" date="2026-01-01"/>|' \
  "$packaging/linux/com.quarnel.tollvane.metainfo.xml.in" >"$root/com.quarnel.tollvane.metainfo.xml"
check "the AppStream metadata with pictures" appstreamcli validate --pedantic --no-net \
  "$root/com.quarnel.tollvane.metainfo.xml"
for page in "$root"/usr/share/man/man1/*.gz; do
  said=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
  check "the manual page $(basename "$page" .gz)" test -z "$said"
done

# at_most KIB WHAT SIZE
at_most() {
  echo "checking: $2 is $3 KiB, at most $1"
  [ "$3" -le "$1" ] || wrong=1
}
at_most 2048 "the package" $(($(stat -c %s "$package") / 1024))
at_most 6144 "what it installs" "$(dpkg-deb -f "$package" Installed-Size)"
strange=$(find "$root" \( -perm /6000 -o -perm /022 ! -type l \) -printf '%P\n')
check "that no file is setuid or writable by others" test -z "$strange"
exit $wrong
