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
  | $b[] | "\(.run_name | sub(""; "")): \(rate) million lines/s, \(.items_per_second / $plain.items_per_second * 10 | round / 10) times the plain port"
' "$build/lines_bench.json"

heading "Names of applications (a desktop with 300 entries)"
"$build/bench/apps_bench" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true 2>/dev/null |
  grep -E '^Benchmark|_median'

heading "The menu's tree; messages of 64 browsers at once, beside a bare echo"
"$build/bench/core_bench" --benchmark_format=json --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  2>/dev/null >"$build/core_bench.json"
jq -r '
  [.benchmarks[] | select(.aggregate_name == "median")] as $b
  | ($b[] | select(.run_name | startswith("menuOfFifty")) | "menu of 50 sounds: \(.real_time * 10 | round / 10) us"),
    ($b[] | select(.run_name | startswith("echo")) | .items_per_second) as $echo
  | ($b[] | select(.run_name | startswith("link")) |
     "messages: \(.items_per_second / 1000 | round) thousand/s, \(.items_per_second / $echo * 100 | round / 100) of a bare echo")
' "$build/core_bench.json"

heading "TollvaneLog"
"$build/bench/soundlog_bench"

heading "TollvaneBridge"
"$build/bench/bridge_bench"

heading "The menu under the bell (X11)"
"$build/bench/menu_bench"

heading "From the extension's report to the menu"
"$here/tab_bench.sh" "$build/Tollvane"

heading "Tollvane"
"$here/program_bench.sh" "$build/Tollvane"
