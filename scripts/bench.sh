#!/usr/bin/env bash
# Runs every benchmark of a Release build, one core, with repeatable settings,
# then the GIF export beside its peers.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build/release}
# The export benchmark cuts its frames from a photograph that scikit-image ships.
"$root/scripts/ensure-packages.sh" python3-skimage
for program in "$build"/bench/*_benchmark; do
  [ -x "$program" ] || continue
  printf '\n== %s\n' "$(basename "$program")"
  taskset -c 0 "$program" --benchmark_min_time=1 "${@:2}"
done
printf '\n== GIF export beside its peers\n'
"$root/bench/compare_gif_export.sh" "$build"
