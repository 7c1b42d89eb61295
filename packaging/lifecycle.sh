#!/usr/bin/env bash
# Installs, upgrades, downgrades, removes and purges a package, while Tollvane runs. Only for a computer or tree that is
# thrown away, because it changes the system: to be run as root, with the package as its argument.
#
#   lifecycle.sh PACKAGE
#
# Needs what packaging/debian/session.txt lists. Prints each check, and ends with 1 if one fails.
set -euo pipefail
[ $# = 1 ] && [ "$(id -u)" = 0 ] || { echo "usage, as root of a computer that is thrown away: lifecycle.sh PACKAGE" >&2; exit 64; }
here=$(cd "$(dirname "$0")" && pwd)
package=$(realpath "$1")
work=$(mktemp -d)

# repack VERSION: the same package under another version.
repack() {
  rm -rf "$work/root"
  dpkg-deb -R "$package" "$work/root"
  sed -i "s/^Version: .*/Version: $1/" "$work/root/DEBIAN/control"
  sed -i "s/\"CFBundleShortVersionString\": \"[^\"]*\"/\"CFBundleShortVersionString\": \"$1\"/" \
    "$work/root/usr/lib/tollvane/Info.json"
  dpkg-deb --root-owner-group -b "$work/root" "$work/tollvane_$1.deb" >/dev/null
}
repack 0.0.1
repack 9.0.0

packages() { DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends "$@" >"$work/apt" 2>&1 || { cat "$work/apt"; exit 1; }; }

wrong=0
check() {
  if eval "$2"; then echo "ok: $1"; else echo "WRONG: $1"; wrong=1; fi
}

packages install "$work/tollvane_0.0.1.deb"

# The session replaces all variables of this shell, as a login does.
# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"
begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
trap 'rm -rf "$work"' EXIT

running() { pgrep -f "^/usr/lib/tollvane/$1( |\$)" >/dev/null || pgrep -x "$1" >/dev/null; }
doctor() { Tollvane --doctor || true; }
eventually() { for _ in $(seq 100); do eval "$1" && return; sleep 0.1; done; return 1; }
linked() { doctor | grep -q "Tollvane $1 runs"; }
heard() { wc -l <"$home/.local/share/Tollvane/history.txt" 2>/dev/null || echo 0; }

Tollvane >"$log/tollvane" 2>&1 &
check "the installed one runs" 'eventually "linked 0.0.1"'
check "it starts at login" 'grep -q /usr/lib/tollvane/Tollvane "$home/.config/autostart/tollvane.desktop"'
check "its log tool runs" 'eventually "running TollvaneLog"'
log_tool=$(pgrep -x TollvaneLog)

packages install "$work/tollvane_9.0.0.deb"
check "after the upgrade the old one runs on" 'doctor | grep -q "Tollvane 0.0.1 runs, but its program has been replaced"'
check "and its log tool does" '[ "$(pgrep -x TollvaneLog)" = "$log_tool" ]'
pw-play "$root/tone.wav" 2>/dev/null || paplay /usr/share/sounds/freedesktop/stereo/bell.oga || true
check "and it still hears" 'eventually "[ \$(heard) -ge 1 ]"'
pkill -TERM -x Tollvane
check "it ends" 'eventually "! running Tollvane"'
Tollvane >"$log/tollvane" 2>&1 &
check "the next start is the new one" 'eventually "linked 9.0.0"'
lines=$(heard)

packages --allow-downgrades install "$work/tollvane_0.0.1.deb"
check "a downgrade keeps the history" '[ "$(heard)" = "$lines" ] && [ "$lines" -ge 1 ]'
check "and the settings" '[ -s "$home/.config/Tollvane/defaults.json" ]'

find "$home" -path '*ollvane*' | sort >"$work/home-before"
packages remove tollvane
check "after the removal nothing of it runs" 'eventually "! running Tollvane && ! running TollvaneLog"'
left() { find /etc /usr /var/lib -path /var/lib/dpkg -prune -o -iname '*tollvane*' -print | grep -v '^/usr/share/doc/tollvane$' | grep -v "^$here"; }
check "nothing of it is left in the system" '[ -z "$(left)" ]'
packages purge tollvane
check "and after the purge nothing either" '[ -z "$(left)" ]'
find "$home" -path '*ollvane*' -not -name bridge.sock | sort >"$work/home-after"
sed -i '/bridge.sock$/d' "$work/home-before"
check "the home is untouched" 'diff "$work/home-before" "$work/home-after"'
exit $wrong
