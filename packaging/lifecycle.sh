#!/usr/bin/env bash
# Installs, upgrades, downgrades, removes and purges a package, while Tollvane runs. Only for a computer or tree that is
# thrown away, because it changes the system: to be run as root, with the package as its argument.
#
#   lifecycle.sh PACKAGE
#
# Needs what packaging/debian/session.txt lists. Prints each check, and ends with 1 if one fails.
# shellcheck disable=SC2317  # the functions are called by check
set -euo pipefail
if [ $# != 1 ] || [ "$(id -u)" != 0 ]; then
  echo "usage, as root of a computer that is thrown away: lifecycle.sh PACKAGE" >&2
  exit 64
fi
here=$(cd "$(dirname "$0")" && pwd)
package=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

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

# packages WORD...: runs apt-get, and prints what it says if it fails.
packages() {
  DEBIAN_FRONTEND=noninteractive apt-get -qq -y --no-install-recommends "$@" >"$work/apt" 2>&1 && return
  cat "$work/apt" >&2
  exit 1
}

wrong=0
# check SENTENCE COMMAND...
check() {
  local sentence=$1
  shift
  if "$@"; then echo "ok: $sentence"; else
    echo "WRONG: $sentence"
    wrong=1
  fi
}

# eventually COMMAND...: whether it succeeds within ten seconds.
eventually() {
  local _
  for _ in $(seq 100); do
    if "$@"; then return; fi
    sleep 0.1
  done
  return 1
}

packages --allow-downgrades install "$work/tollvane_0.0.1.deb"

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"
begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
own=$home/.local/share/Tollvane

start_tollvane() {
  Tollvane >>"$log/tollvane" 2>&1 &
  tollvane=$!
}
gone() { ! kill -0 "$1" 2>/dev/null; }
says() { (Tollvane --doctor || true) | grep -qF "$1"; }
log_tool() { pgrep -P "$tollvane" -x TollvaneLog; }
has_log_tool() { log_tool >/dev/null; }
lines() { if [ -f "$own/history.txt" ]; then wc -l <"$own/history.txt"; else echo 0; fi; }
heard_more_than() { [ "$(lines)" -gt "$1" ]; }
same_log_tool() { [ "$(log_tool)" = "$log_pid" ]; }
same_history() { [ "$(lines)" = "$before" ]; }
tone() { sox -n -r 48000 "$work/tone.wav" synth 0.5 sine 440 vol 0.1 && pw-play "$work/tone.wav"; }
left_in_system() {
  find /etc /usr /var/lib -path /var/lib/dpkg -prune -o -iname '*tollvane*' -print | { grep -v "^$here" || true; }
}
nothing_left() { [ -z "$(left_in_system)" ]; }
in_home() { (cd "$home" && find . -path '*ollvane*' -type f -exec md5sum {} + | sort); }
# GNOME Shell's schema, which stands for the shell.
shell_default() { GSETTINGS_BACKEND=memory gsettings get org.gnome.shell enabled-extensions; }
is_on_in_shell() { [ "$(shell_default)" = "['tollvane@quarnel.com']" ]; }
is_not_on_in_shell() { [ "$(shell_default)" = "@as []" ]; }
home_is_same() { [ "$(in_home)" = "$home_before" ]; }

start_tollvane
check "the installed one runs" eventually says "Tollvane 0.0.1 runs."
check "it starts at login" grep -q '"/usr/lib/tollvane/Tollvane"' "$home/.config/autostart/tollvane.desktop"
check "its log tool runs" eventually has_log_tool
log_pid=$(log_tool)
eventually says "Sounds can be heard"
sleep 2

packages install "$work/tollvane_9.0.0.deb"
check "after the upgrade the old one runs on, and the doctor says so" \
  says "Tollvane 0.0.1 runs, but its program has been replaced"
check "its log tool runs on" same_log_tool
before=$(lines)
tone
check "it still hears" eventually heard_more_than "$before"
kill -TERM "$tollvane"
check "it ends when it is asked to" eventually gone "$tollvane"
start_tollvane
check "the next start is the new one" eventually says "Tollvane 9.0.0 runs."

before=$(lines)
packages --allow-downgrades install "$work/tollvane_0.0.1.deb"
check "a downgrade keeps the history" same_history
check "and the settings" test -s "$home/.config/Tollvane/defaults.json"

check "without GNOME Shell its default is not touched" test ! -e /usr/share/glib-2.0/schemas/05_tollvane.gschema.override
packages install gnome-shell-common libglib2.0-bin
check "where GNOME Shell comes, its extension is on for users who have chosen none" is_on_in_shell

home_before=$(in_home)
log_pid=$(log_tool)
packages remove tollvane
check "after the removal it runs no more" eventually gone "$tollvane"
check "nor does its log tool" eventually gone "$log_pid"
check "nothing of it is left in the system" nothing_left
packages --allow-downgrades install "$work/tollvane_0.0.1.deb"
packages purge tollvane
check "nor after it was installed again and purged" nothing_left
check "and GNOME Shell has its own default again" is_not_on_in_shell
check "the home is untouched" home_is_same
[ -z "$(left_in_system)" ] || left_in_system
exit $wrong
