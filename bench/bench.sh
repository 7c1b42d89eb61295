#!/usr/bin/env bash
# Prints every figure that Tollvane claims, each beside its baseline from the same run:
#   bench.sh BUILD      BUILD: the directory of a release build, such as build/release
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(realpath "$1")

heading() { printf '\n== %s\n' "$1"; }

heading "Lines of the log tool to sound events (900 bytes a line, a quarter of them sounds)"
"$build/bench/lines_bench" --benchmark_format=json --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  2>/dev/null >"$build/lines_bench.json"
jq -r '
  def rate: .items_per_second / 1e6 * 1000 | round / 1000;
  [.benchmarks[] | select(.aggregate_name == "median")] as $b
  | ($b[] | select(.run_name | startswith("plainPort"))) as $plain
  | $b[] | "\(.run_name): \(rate) million lines/s, \(.items_per_second / $plain.items_per_second * 10 | round / 10) times the plain port"
' "$build/lines_bench.json"

heading "Names of applications (a desktop with 300 entries)"
"$build/bench/apps_bench" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true 2>/dev/null |
  grep -E '^Benchmark|_median'

heading "Growth: processor time with once, ten times and a hundred times as much, beside the least that it could take"
"$build/bench/growth_bench" --benchmark_format=json 2>/dev/null >"$build/growth_bench.json"
jq -r '
  def us: if . < 10 then . * 100 | round / 100 else round end;
  def times: [.benchmarks[] | {name: (.name | split("/")[0]), amount: (.name | split("/")[1] | split(":") | last), cpu_time}];
  (times | group_by(.name) | map({key: .[0].name, value: .}) | from_entries) as $all
  | [["linesToSounds", "limitOfLines", "lines to sounds"],
     ["nameOfAProcess", null, "the name of a process, by the number of desktop entries"],
     ["readAllEntries", "limitOfEntries", "reading all desktop entries"],
     ["findRunningApplication", "limitOfProcesses", "finding an application, by the number of processes"]][]
  | . as [$name, $limit, $title]
  | "\($title), us:",
    ($all[$name] | to_entries[] | .key as $i
     | "  \(.value.amount): \(.value.cpu_time | us)" +
       if $limit then ", the least \($all[$limit][$i].cpu_time | us)" else "" end)
' "$build/growth_bench.json"

heading "The menu's tree; messages of browsers at once, beside a bare echo"
"$build/bench/core_bench" --benchmark_format=json --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  2>/dev/null >"$build/core_bench.json"
jq -r '
  [.benchmarks[] | select(.aggregate_name == "median")] as $b
  | ($b[] | select(.run_name | startswith("menuOfFifty")) | "menu of 50 sounds: \(.cpu_time * 10 | round / 10) us"),
    ($b[] | select(.run_name | startswith("link")) | (.run_name | split("/")[1]) as $connections
     | ($b[] | select(.run_name == "echoWithClients/\($connections)") | .items_per_second) as $echo
     | "\($connections) browsers: \(.items_per_second / 1000 | round) thousand messages/s, \(.items_per_second / $echo * 100 | round / 100) of a bare echo")
' "$build/core_bench.json"

heading "A sound on its way to the bell while a bridge misbehaves, beside an idle link"
"$build/bench/link_bench"

heading "TollvaneLog"
"$build/bench/soundlog_bench"

heading "TollvaneBridge"
"$build/bench/bridge_bench"

heading "The menu under the bell (X11)"
"$build/bench/menu_bench"

heading "From the extension's report to the menu"
"$here/tab_bench.sh" "$build/Tollvane"

heading "Tollvane"
"$here/program_bench.sh" "$build/Tollvane" "$build/bench/empty_program"

heading "A day's sounds, in minutes"
"$here/day_bench" "$build/Tollvane"
