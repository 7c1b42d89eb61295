#!/usr/bin/env bash
# Measures the time from an extension's report to the menu entry that names the tab, with the real bridge and the real
# program:
#   tab_bench.sh BUNDLE
# The time begins with the first byte into the bridge's standard input. It ends when the menu announces on the session
# bus that it has changed, so that a bar would fetch it. It includes the bus, the listening program (gdbus) and this
# script's reading.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
bundle=$(realpath "$1")
runs=15

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"

# await DESCRIPTOR TEXT: waits until the program behind the descriptor prints TEXT.
await() {
  local line
  while read -r -t 10 -u "$1" line; do [[ $line == *"$2"* ]] && return; done
  echo "tab_bench: this did not come: $2" >&2
  exit 1
}

# report JSON: sends a message as browsers do. The shell writes it itself, because the start of a program would be
# measured too.
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
ask_menu GetLayout iias 0 1 0 >/dev/null # after the first GetLayout the menu announces its changes

# A player with the name of a browser makes the sounds, and a variable tells the bridge that this browser started it.
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
  sleep 1.6 # repeated sounds of one application within 1.5 seconds count as one
  "$root/Chromium" -p "$root/silence.wav"
  await "$bus" LayoutUpdated
  begin=${EPOCHREALTIME/./}
  report '{"type":"audible","tabId":'"$run"',"title":"Report '"$run"'.","host":"localhost"}'
  await "$bus" LayoutUpdated
  end=${EPOCHREALTIME/./}
  ask_menu GetLayout iias 0 1 0 | grep -q "Tab: Report $run\." ||
    { echo "tab_bench: no entry names the tab" >&2; exit 1; }
  # The first run fills the caches and is not counted.
  [ "$run" -eq 0 ] || times+=($((end - begin)))
done
printf '%s\n' "${times[@]}" | sort -n | awk '{v[NR] = $1 / 1000} END {
  printf "report to menu entry, ms: median %.1f, from %.1f to %.1f (%d runs)\n", v[int((NR + 1) / 2)], v[1], v[NR], NR}'
