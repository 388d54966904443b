#!/usr/bin/env bash
# Runs every fuzz target (or the ones named) for SECONDS each on the fuzz
# build, two at a time, and fails if any finds a crash, leak, hang or
# undefined behaviour. Findings land in build/fuzz/findings/NAME/; copy
# each into fuzz/crashers/NAME/ once it is fixed, so ctest replays it.
# With FUZZ_RUNS=N each target stops after N executions if that comes first;
# FUZZ_JOBS=N runs N targets at a time (2 by default).
#
#   [FUZZ_RUNS=N] [FUZZ_JOBS=N] bash fuzz/run.sh SECONDS [NAME...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: fuzz/run.sh SECONDS [NAME...]}
shift
build=build/fuzz
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for seeds in "$build"/fuzz/*.seeds; do names+=("$(basename "$seeds" .seeds)"); done
fi
[ ${#names[@]} -gt 0 ] || { echo "no fuzz targets in $build: build the fuzz preset first" >&2; exit 1; }

run_one() {
  local name=$1 seconds=$2 build=$3
  local work=$build/fuzz-corpus/$name findings=$build/findings/$name log=$build/findings/$name.log
  mkdir -p "$work" "$findings"
  local seeds=()
  while read -r dir; do [ -n "$dir" ] && [ -d "$dir" ] && seeds+=("$dir"); done < "$build/fuzz/$name.seeds"
  local status=0 runs_option=()
  [ -n "${FUZZ_RUNS:-}" ] && runs_option=(-runs="$FUZZ_RUNS")
  "$build/fuzz/fuzz_$name" -max_total_time="$seconds" "${runs_option[@]}" -timeout=10 -rss_limit_mb=2048 \
      -max_len=65536 -print_final_stats=1 -artifact_prefix="$findings/" \
      "$work" "${seeds[@]}" > "$log" 2>&1 || status=$?
  local runs
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  if [ $status -eq 0 ]; then
    printf '%-12s %12s executions, no finding\n' "$name" "${runs:-?}"
  else
    printf '%-12s %12s executions, FINDING (exit %d): see %s and %s\n' "$name" "${runs:-?}" \
      "$status" "$log" "$findings"
    grep -m 3 -E 'ERROR|SUMMARY|runtime error' "$log" || true
  fi
  return $status
}
export -f run_one

printf '%s\n' "${names[@]}" |
  xargs -P "${FUZZ_JOBS:-2}" -I{} bash -c 'run_one "$@"' _ {} "$seconds" "$build"
