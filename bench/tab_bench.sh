#!/usr/bin/env bash
# From what an extension reports to the menu entry that names the tab, through the real bridge and the real program:
#   tab_bench.sh BUNDLE
# The clock runs from the first byte into the bridge's standard input to the menu's saying on the session bus that it
# is another, upon which a bar fetches it, and so counts the bus, the listening program (gdbus) and this script's own reading with it.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
bundle=$(realpath "$1")
runs=15

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"

# await TEXT: until the monitor of that descriptor prints it.
await() {
  local line
  while read -r -t 10 -u "$1" line; do [[ $line == *"$2"* ]] && return; done
  echo "tab_bench: this did not come: $2" >&2
  exit 1
}

# report JSON: as browsers send it. By the shell itself, as a program's start would be measured too.
report() {
  local bytes
  printf -v bytes '\\x%02x\\x%02x\\x00\\x00' $((${#1} & 255)) $((${#1} >> 8))
  # shellcheck disable=SC2059
  printf "$bytes%s" "$1" >&"$reports"
}

ask_menu() { busctl --user call "$item" /StatusNotifierItem/Menu com.canonical.dbusmenu "$@"; }
in_panel() { watcher_property RegisteredStatusNotifierItems | grep -q "$item"; }
listens() {
  log_tool=$(pgrep -P "$tollvane" -x TollvaneLog) &&
    pw-dump | grep -q "\"\(application.process.id\|pipewire.sec.pid\)\": \"\?$log_tool\b"
}
linked() { grep -q " 03 *[0-9]* $home/.local/share/Tollvane/bridge.sock\$" /proc/net/unix; }

begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
mkdir -p "$home/.config/Tollvane"
echo '{"hasLaunchedBefore": true}' >"$home/.config/Tollvane/defaults.json"
start tollvane "$bundle/Tollvane"
tollvane=$!
item=org.kde.StatusNotifierItem-$tollvane-1
require 10 "the bell in the panel" in_panel
require 10 "Tollvane listening" listens
ask_menu GetLayout iias 0 1 0 >/dev/null # from now on it tells of its changes

# A player by the name of a browser makes the sounds; the bridge believes that browser to have started it.
cp "$(readlink -f "$(command -v pw-play)")" "$root/Chromium"
mkfifo "$root/reports"
exec {reports}<>"$root/reports"
setpriv --pdeathsig KILL env CHROME_DESKTOP=chromium.desktop \
  "$bundle/TollvaneBridge" chrome-extension://obnkhebafdebfkbooeekkekkklllpdhc/ \
  <"$root/reports" >"$log/bridge.out" 2>"$log/bridge.log" &
started+=($!)
require 10 "the bridge's link" linked
report '{"type":"hello","version":"1"}'

exec {bus}< <(exec setpriv --pdeathsig KILL gdbus monitor --session --dest "$item" 2>/dev/null)
started+=($!)
await "$bus" "is owned by"

times=()
for ((run = 0; run <= runs; run++)); do
  sleep 1.6 # sounds of one application in quick succession are one
  "$root/Chromium" -p "$root/silence.wav"
  await "$bus" LayoutUpdated
  begin=${EPOCHREALTIME/./}
  report '{"type":"audible","tabId":'"$run"',"title":"Report '"$run"'.","host":"localhost"}'
  await "$bus" LayoutUpdated
  end=${EPOCHREALTIME/./}
  ask_menu GetLayout iias 0 1 0 | grep -q "Tab: Report $run\." ||
    { echo "tab_bench: no entry names the tab" >&2; exit 1; }
  # The first one finds nothing in any cache.
  [ "$run" -eq 0 ] || times+=($((end - begin)))
done
printf '%s\n' "${times[@]}" | sort -n | awk '{v[NR] = $1 / 1000} END {
  printf "report to menu entry, ms: median %.1f, from %.1f to %.1f (%d runs)\n", v[int((NR + 1) / 2)], v[1], v[NR], NR}'
