#!/usr/bin/env bash
# Runs every benchmark of a Release build, one core, with repeatable settings.
set -euo pipefail
build=${1:-build/release}
for program in "$build"/bench/*_benchmark; do
  [ -x "$program" ] || continue
  printf '\n== %s\n' "$(basename "$program")"
  taskset -c 0 "$program" --benchmark_min_time=1 "${@:2}"
done

# DitherImage beside Pillow on photographs, with ratios.
printf '\n== compare_dither\n'
"$(dirname "$0")/../bench/compare_dither.sh" "$build"
