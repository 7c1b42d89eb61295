#!/usr/bin/env bash
# Tollvane as a whole process, in a private desktop with a real panel and a real sound server:
#   program_bench.sh BUNDLE
# prints how long it takes from its start to its icon, what it costs in memory, and how often it wakes while idle.
# The log tool that it starts is counted by itself (soundlog_bench).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
bundle=$(realpath "$1")
runs=15
idle_seconds=30

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"

# A pipe from a program that stays, so that a line is stamped when it arrives and not when somebody looks.
start_item_monitor() {
  exec {items}< <(exec setpriv --pdeathsig KILL gdbus monitor --session --dest org.kde.StatusNotifierWatcher 2>/dev/null)
  started+=($!)
  local line
  while read -r -t 10 -u "$items" line; do [[ $line == *"is owned by"* ]] && return; done
  return 1
}

# Milliseconds from the start of the program to the panel's watcher announcing its item.
start_to_icon() {
  local begin=$EPOCHREALTIME line end
  start tollvane "$bundle/Tollvane"
  tollvane=$!
  while read -r -t 10 -u "$items" line; do
    end=$EPOCHREALTIME
    [[ $line == *StatusNotifierItemRegistered* ]] || continue
    echo $(((${end/./} - ${begin/./}) / 100))
    return
  done
  echo "the icon did not appear" >&2
  exit 1
}

tenths() { echo "$(($1 / 10)).$(($1 % 10))"; }
pss() { awk '/^Pss:/ {printf "%.1f", $2 / 1024}' "/proc/$1/smaps_rollup"; }
context_switches() { cat /proc/"$1"/task/*/status | awk '/ctxt_switches/ {sum += $2} END {print sum}'; }
median() { sort -n | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
mkdir -p "$home/.config/Tollvane"
echo '{"hasLaunchedBefore": true}' >"$home/.config/Tollvane/defaults.json" # no welcome window in the way
require 10 "a watch on the panel's items" start_item_monitor
times=()
for ((run = 0; run <= runs; run++)); do
  # The first one warms the disk's cache and is not counted.
  start_to_icon >"$root/time"
  [ "$run" -gt 0 ] && times+=("$(cat "$root/time")")
  [ "$run" -lt "$runs" ] && stop "$tollvane"
done
sorted=$(printf '%s\n' "${times[@]}" | sort -n)
echo "start to icon, ms: median $(tenths "$(median <<<"$sorted")"), from $(tenths "$(head -1 <<<"$sorted")") to $(tenths "$(tail -1 <<<"$sorted")") ($runs runs)"

sleep 5 # what a start leaves behind has settled
before=$(context_switches "$tollvane")
sleep "$idle_seconds"
echo "idle for $idle_seconds s, context switches: $(($(context_switches "$tollvane") - before))"
echo "PSS, MiB: $(pss "$tollvane") (the panel beside it: $(pss "$panel_pid"))"
