#!/usr/bin/env bash
# Makes everything that is handed out, from one build:
#
#   package.sh BUILD OUT [KEY]   BUILD: a build directory that holds the bundle; OUT: a directory for the packages;
#                                KEY: signs the extension for Chrome and Edge, and is made if there is no such file
#
#   OUT/tollvane_VERSION_ARCHITECTURE.deb         for the Debian release on which this runs
#   OUT/Tollvane-VERSION-linux-MACHINE.tar.gz     the bundle, which runs from any directory
#   OUT/tollvane-extension-VERSION-chromium.zip   for the store of the Chromium family
#   OUT/tollvane-extension-VERSION-firefox.xpi    for Firefox's store
#   OUT/tollvane-extension-VERSION-source.zip     the source of the extension, which Firefox's store asks for
#
# The same sources, compiler and key give the same bytes, whenever and wherever this runs. All dates are that of the newest
# release in CHANGELOG.md. Neither root nor the network is needed.
set -euo pipefail
[ $# = 2 ] || [ $# = 3 ] || { echo "usage: package.sh BUILD OUT [KEY]" >&2; exit 64; }
packaging=$(cd "$(dirname "$0")" && pwd)
source=$(dirname "$packaging")
build=$(realpath "$1")
key=${3:+$(realpath -m "$3")}
mkdir -p "$2"
out=$(realpath "$2")

fail() {
  echo "package.sh: $1" >&2
  exit 1
}

bundle=$build/Tollvane
version=$(jq -r .CFBundleShortVersionString "$bundle/Info.json")
site=$(jq -r .TollvaneSite "$bundle/Info.json")
read -r newest date < <(sed -n 's/^## \(.*\) (\(.*\))$/\1 \2/p' "$source/CHANGELOG.md" | head -n 1)
[ "$newest" = "$version" ] || fail "the newest release in CHANGELOG.md is $newest, but the bundle's version is $version."
[ "$(jq -r .version "$source/extension/manifest.json")" = "$version" ] || fail "the extension is not version $version."
SOURCE_DATE_EPOCH=$(date -u -d "$date" +%s)
export SOURCE_DATE_EPOCH LC_ALL=C TZ=UTC
umask 022

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# --- the bundle, without what only a debugger reads -------------------------------------------------------------------

cp -R "$bundle" "$work/Tollvane"
for program in Tollvane TollvaneLog TollvaneBridge TollvaneLogPulse.so TollvaneWeb.so; do
  strip --strip-unneeded --remove-section=.comment "$work/Tollvane/$program"
done
chmod -R u=rwX,go=rX "$work/Tollvane"
chmod 644 "$work/Tollvane/"{TollvaneLogPulse,TollvaneWeb}.so
mv "$work/Tollvane/Extensions/tollvane-chromium.zip" "$out/tollvane-extension-$version-chromium.zip"
cp "$work/Tollvane/Extensions/firefox/tollvane.xpi" "$out/tollvane-extension-$version-firefox.xpi"

# The signed extension's identifier follows from the key, and the manifests have to admit it.
signed_id=
if [ -n "$key" ]; then
  case $key in "$source"/*) fail "the key $key is among the sources, where it could be published." ;; esac
  crx=Extensions/tollvane.crx
  signed_id=$("$packaging/sign_extension.py" "$key" "$out/tollvane-extension-$version-chromium.zip" "$work/Tollvane/$crx")
  chmod 644 "$work/Tollvane/$crx"
  jq --arg id "$signed_id" '.TollvaneChromiumExtensionIDs += [$id]' "$bundle/Info.json" >"$work/Tollvane/Info.json"
fi

tar -C "$work" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner -cf - Tollvane |
  gzip -9n >"$out/Tollvane-$version-linux-$(uname -m).tar.gz"

# --- the source of the extension --------------------------------------------------------------------------------------

mkdir "$work/extension"
cp -R "$source/extension/"{README.md,adding.html,icons,manifest.json,package.json,package.sh,src,tests} "$work/extension"
cp "$source/LICENSE" "$work/extension"
find "$work/extension" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
rm -f "$out/tollvane-extension-$version-source.zip"
(cd "$work" && find extension -type f | sort | zip -q -X -9 "$out/tollvane-extension-$version-source.zip" -@)

# --- the Debian package -----------------------------------------------------------------------------------------------

if ! command -v dpkg-deb dpkg-shlibdeps >/dev/null; then
  echo "There is no Debian package, because dpkg-dev is not installed." >&2
  exit 0
fi

root=$work/root
share=$root/usr/share
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "${VERSION_ID:-}")
debian_version=$version${release:+~deb${release%%.*}}
architecture=$(dpkg --print-architecture)

# fill FILE: prints it with its placeholders filled.
fill() { sed "s|@VERSION@|$version|; s|@DATE@|$date|; s|@SITE@|$site|" "$1"; }

# put FILE PATH: copies a file into the package.
put() { install -D -m 644 "$1" "$root$2"; }

mkdir -p "$root/usr/bin" "$root/usr/lib" "$root/DEBIAN"
cp -R "$work/Tollvane" "$root/usr/lib/tollvane"
for program in Tollvane TollvaneLog; do ln -s "../lib/tollvane/$program" "$root/usr/bin/$program"; done
ln -s Tollvane "$root/usr/bin/tollvane"

put "$packaging/linux/tollvane.desktop" /usr/share/applications/tollvane.desktop
icons=/usr/share/icons/hicolor
put "$source/extension/icons/bell.svg" $icons/scalable/apps/tollvane.svg
for size in 16 32 48 128; do
  put "$source/extension/icons/bell-$size.png" "$icons/${size}x$size/apps/tollvane.png"
done
put "$bundle/icons/hicolor/symbolic/apps/tollvane-bell-symbolic.svg" $icons/symbolic/apps/tollvane-symbolic.svg

# releases: CHANGELOG.md in AppStream's form.
releases() {
  sed -n 's|^## \(.*\) (\(.*\))$|    <release version="\1" date="\2"/>|p' "$source/CHANGELOG.md"
}
# AppStream 1.0, which Debian has since 13, has another element for the authors.
developer='<developer id="com.quarnel"><name translate="no">The Tollvane authors</name></developer>'
if [ "${release%%.*}" = 12 ]; then developer='<developer_name translate="no">The Tollvane authors</developer_name>'; fi
mkdir -p "$share/metainfo"
releases >"$work/releases"
fill "$packaging/linux/com.quarnel.tollvane.metainfo.xml.in" |
  sed -e "s|@DEVELOPER@|$developer|; /@RELEASES@/{r $work/releases" -e 'd}' >"$share/metainfo/com.quarnel.tollvane.metainfo.xml"
# A build without a real site has no home page, and no place from which a software centre could load pictures.
if [[ $site == *.invalid ]]; then
  sed -i '/<url /d; /<screenshots>/,/<\/screenshots>/d' "$share/metainfo/com.quarnel.tollvane.metainfo.xml"
fi

mkdir -p "$share/man/man1"
for page in Tollvane TollvaneLog TollvaneBridge; do
  fill "$packaging/linux/$page.1" | gzip -9n >"$share/man/man1/$page.1.gz"
done
ln -s Tollvane.1.gz "$share/man/man1/tollvane.1.gz"

# Browsers of Debian load extensions for all users from these folders.
mkdir -p "$share/chromium/extensions" "$share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}"
ln -s ../../../lib/tollvane/Extensions/chromium "$share/chromium/extensions/tollvane"
ln -s ../../../../lib/tollvane/Extensions/firefox/tollvane.xpi \
  "$share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/tollvane@quarnel.com.xpi"

# Chrome and Edge read there which signed extensions they should have.
if [ -n "$signed_id" ]; then
  for browser in google-chrome microsoft-edge; do
    mkdir -p "$share/$browser/extensions"
    jq -n --arg crx "/usr/lib/tollvane/$crx" --arg version "$version" \
      '{external_crx: $crx, external_version: $version}' >"$share/$browser/extensions/$signed_id.json"
  done
fi

# GNOME Shell loads extensions for all users from this folder; postinst turns ours on. Up to 44 they are scripts.
generation=45
if [ "${release%%.*}" = 12 ]; then generation=43; fi
mkdir -p "$share/gnome-shell/extensions"
ln -s "../../../lib/tollvane/Extensions/gnome/$generation/tollvane@quarnel.com" \
  "$share/gnome-shell/extensions/tollvane@quarnel.com"
put "$packaging/linux/gnome.gschema.override" /usr/lib/tollvane/gnome.gschema.override

# The manifests in /etc are links, because they are no settings: nothing of them stays when the package is removed.
"$build/packaging/system_manifests" "$work/Tollvane" /usr/lib/tollvane/TollvaneBridge "$work/manifests"
find "$work/manifests" -type f -printf '%P\n' | sort >"$work/list"
while IFS= read -r file; do
  if [[ $file != etc/* ]]; then
    put "$work/manifests/$file" "/$file"
    continue
  fi
  place=usr/lib/tollvane/native-messaging-hosts/$(tr / - <<<"${file%/native-messaging-hosts/*}").json
  put "$work/manifests/$file" "/$place"
  mkdir -p "$root/$(dirname "$file")"
  ln -s "/$place" "$root/$file"
done <"$work/list"

# Each link leads to something in the package.
while IFS= read -r link; do
  target=$(readlink "$link")
  case $target in /*) target=$root$target ;; *) target=$(dirname "$link")/$target ;; esac
  [ -e "$target" ] || fail "${link#"$root"} leads nowhere."
done < <(find "$root" -type l)

documents=$share/doc/tollvane
mkdir -p "$documents"
put "$packaging/debian/copyright" /usr/share/doc/tollvane/copyright
for page in PRIVACY.md docs/{installing,troubleshooting,extension,hearing}.md; do
  put "$source/$page" "/usr/share/doc/tollvane/$(basename "$page")"
done
# CHANGELOG.md in Debian's form
awk -v suffix="${debian_version#"$version"}" '
  function finish() {
    if (version) printf "\n -- The Tollvane authors <tollvane@quarnel.com>  %s\n", stamp
  }
  /^## / {
    finish()
    version = $2
    gsub(/[()]/, "", $3)
    command = "date -u -R -d " $3
    command | getline stamp
    close(command)
    if (count++) print ""
    printf "tollvane (%s%s) unstable; urgency=medium\n\n", version, suffix
    next
  }
  # A line is at most 78 characters long.
  function say(text,    words, count, line, i) {
    count = split(text, words, " ")
    for (i = 1; i <= count; i++) {
      if (line != "" && length(line " " words[i]) > 74) { print lead line; lead = "    "; line = "" }
      line = line (line == "" ? "" : " ") words[i]
    }
    print lead line
    lead = "    "
  }
  version && /^- / { lead = "  * "; say(substr($0, 3)); next }
  version && /^  / { say($0) }
  END { finish() }' "$source/CHANGELOG.md" | gzip -9n >"$documents/changelog.gz"

overrides=("$packaging/debian/lintian-overrides")
if [ "${release%%.*}" != 12 ] && [[ $site == *.invalid ]]; then overrides+=("$packaging/debian/lintian-overrides.13"); fi
cat "${overrides[@]}" >"$work/overrides"
put "$work/overrides" /usr/share/lintian/overrides/tollvane

# dpkg-shlibdeps wants the source package's file of that name.
mkdir "$work/debian"
printf 'Source: tollvane\n\nPackage: tollvane\nArchitecture: any\n' >"$work/debian/control"
depends=$(cd "$work" && dpkg-shlibdeps -O root/usr/lib/tollvane/Tollvane{,Log,Bridge,LogPulse.so,Web.so} 2>"$work/shlibdeps") ||
  { cat "$work/shlibdeps" >&2; fail "dpkg-shlibdeps failed."; }
depends=${depends#shlibs:Depends=}
bars=$(sed 's/#.*//' "$packaging/debian/bars.txt" | xargs | sed 's/ / | /g')
install -m 755 -t "$root/DEBIAN" "$packaging/debian/"{postinst,prerm,postrm}
install -m 644 -t "$root/DEBIAN" "$packaging/debian/triggers"
(cd "$root" && find . -path ./DEBIAN -prune -o -type f -printf '%P\0' | sort -z | xargs -0 md5sum) >"$root/DEBIAN/md5sums"
# As Policy counts it: a file in whole KiB, anything else as one.
size=$(find "$root" -path "$root/DEBIAN" -prune -o -type f -printf '%s\n' -o -printf '1\n' |
  awk '{ total += int(($1 + 1023) / 1024) } END { print total }')
sed "s/@VERSION@/$debian_version/; s/@ARCHITECTURE@/$architecture/; s/@SIZE@/$size/; s/@DEPENDS@/$depends/; s/@BARS@/$bars/" \
  "$packaging/debian/control.in" >"$root/DEBIAN/control"
chmod -R u=rwX,go=rX "$root"
rm -f "$out"/tollvane_*_"$architecture".deb
dpkg-deb --root-owner-group -Zxz --build "$root" "$out/tollvane_${debian_version}_$architecture.deb" >/dev/null
