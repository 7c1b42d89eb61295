#!/usr/bin/env bash
# Measures the process Tollvane, in a private desktop with a real panel and a real sound server:
#   program_bench.sh BUNDLE EMPTY
# prints the time from its start to its icon, its memory, and how often it wakes while idle. The log tool is a process
# of its own, which soundlog_bench measures. EMPTY is a program that only starts the toolkit.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
bundle=$(realpath "$1")
empty=$(realpath "$2")
runs=15
idle_seconds=30

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"

# Starts a program that prints the signals of the panel's watcher. Its output is read through a pipe, without polling,
# so the time is taken when a line arrives.
start_item_monitor() {
  exec {items}< <(exec setpriv --pdeathsig KILL gdbus monitor --session --dest org.kde.StatusNotifierWatcher 2>/dev/null)
  started+=($!)
  local line
  while read -r -t 10 -u "$items" line; do [[ $line == *"is owned by"* ]] && return; done
  return 1
}

# Tenths of a millisecond from the start of Tollvane until the panel's watcher announces its item.
start_to_icon() {
  local begin=$EPOCHREALTIME end
  start tollvane "$bundle/Tollvane"
  tollvane=$!
  await_icon
  end=$EPOCHREALTIME
  echo $(((${end/./} - ${begin/./}) / 100))
}

await_icon() {
  local line
  while read -r -t 10 -u "$items" line; do [[ $line == *StatusNotifierItemRegistered* ]] && return; done
  echo "the icon did not appear" >&2
  exit 1
}

tenths() { echo "$(($1 / 10)).$(($1 % 10))"; }
pss() { awk '/^Pss:/ {printf "%.1f", $2 / 1024}' "/proc/$1/smaps_rollup"; }
context_switches() { cat /proc/"$1"/task/*/status | awk '/ctxt_switches/ {sum += $2} END {print sum}'; }
median() { sort -n | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
mkdir -p "$home/.config/Tollvane"
echo '{"hasLaunchedBefore": true}' >"$home/.config/Tollvane/defaults.json" # so that no welcome window opens
require 10 "a watch on the panel's items" start_item_monitor
times=()
for ((run = 0; run <= runs; run++)); do
  # The first run fills the disk cache and is not counted.
  start_to_icon >"$root/time"
  [ "$run" -gt 0 ] && times+=("$(cat "$root/time")")
  [ "$run" -lt "$runs" ] && stop "$tollvane"
done
sorted=$(printf '%s\n' "${times[@]}" | sort -n)
echo "start to icon, ms: median $(tenths "$(median <<<"$sorted")"), from $(tenths "$(head -1 <<<"$sorted")") to $(tenths "$(tail -1 <<<"$sorted")") ($runs runs)"

sleep 5 # the work of the start is done after this
before=$(context_switches "$tollvane")
sleep "$idle_seconds"
echo "idle for $idle_seconds s, context switches: $(($(context_switches "$tollvane") - before))"
echo "PSS, MiB: $(pss "$tollvane") (the panel beside it: $(pss "$panel_pid"))"
stop "$tollvane"

# Of the toolkit's libraries each program here has a copy of its own, so that no other program on the machine shares
# them and makes the figure smaller.
ldd "$bundle/Tollvane" | awk '$1 ~ /^lib(Qt6|icu|simdjson|double-conv|pcre2-16|b2|md4c|harfbuzz|graphite)/ {print $3}' |
  xargs cp -Lt "$root"
plugins=$(dirname "$(ldd "$bundle/Tollvane" | awk '$1 ~ /^libQt6Core/ {print $3}')")/qt6/plugins
cp -L "$(dirname "$plugins")"/../libQt6XcbQpa.so.6 "$root"
cp -r "$plugins" "$root/plugins"
alone=(env LD_LIBRARY_PATH="$root" QT_PLUGIN_PATH="$root/plugins")
# tell WHAT PID: what this process holds, and how much of it no file contains.
tell() {
  local anonymous
  anonymous=$(awk '/^Anonymous:/ {printf "%.1f", $2 / 1024}' "/proc/$2/smaps_rollup")
  echo "PSS with no other program of the toolkit, MiB: $1 $(pss "$2"), in no file $anonymous"
}
# Opens the menu, or closes it if it is open.
toggle_menu() { in_session "${alone[@]}" "$bundle/Tollvane" --show-menu; }
processor_us() { awk '{print int($1 / 1000)}' "/proc/$tollvane/schedstat"; }
page_faults() { awk '{print $10}' "/proc/$tollvane/stat"; }
# tell_openings WHEN SECONDS: what it costs to open the menu so long after it was closed; the mean of five.
tell_openings() {
  local processor=0 faults=0 opening
  for opening in 1 2 3 4 5; do
    sleep "$2"
    processor=$((processor - $(processor_us))) faults=$((faults - $(page_faults)))
    toggle_menu
    sleep 0.5
    processor=$((processor + $(processor_us))) faults=$((faults + $(page_faults)))
    toggle_menu
  done
  echo "opening the menu $1: $((processor / opening)) us of the processor, $((faults / opening)) page faults"
}

start tollvane "${alone[@]}" "$bundle/Tollvane"
tollvane=$!
await_icon
tell "Tollvane, started just now" "$tollvane"
sleep 1
before=$(processor_us)
sleep 4
echo "giving back what the start needed: at most $(($(processor_us) - before)) us of the processor"
tell "Tollvane at rest" "$tollvane"
toggle_menu
sleep 1
tell "Tollvane with its menu open" "$tollvane"
toggle_menu
sleep 5
tell "Tollvane at rest again" "$tollvane"
tell_openings "after a rest" 4
tell_openings "at once" 0.5
stop "$tollvane"
start empty "${alone[@]}" "$empty"
empty_program=$!
sleep 5
tell "an empty program" "$empty_program"
stop "$empty_program"
