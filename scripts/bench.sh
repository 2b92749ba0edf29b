#!/usr/bin/env bash
# Runs every benchmark of a Release build, one core, with repeatable settings,
# then the comparisons with peers that need files built for them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build/release}
# The export benchmark cuts its frames from a photograph that scikit-image ships.
"$root/scripts/ensure-packages.sh" python3-skimage
for program in "$build"/bench/*_benchmark; do
  [ -x "$program" ] || continue
  # Its file is built by its comparison script below.
  case "$(basename "$program")" in import_benchmark | quantize_benchmark) continue ;; esac
  printf '\n== %s\n' "$(basename "$program")"
  taskset -c 0 "$program" --benchmark_min_time=1 "${@:2}"
done
printf '\n== compare_import.sh\n'
"$(dirname "$0")/../bench/compare_import.sh" "$build"

# DitherImage beside Pillow on photographs, with ratios.
printf '\n== compare_dither\n'
"$(dirname "$0")/../bench/compare_dither.sh" "$build"

printf '\n== Quantization beside Pillow and numpy\n'
"$root/bench/compare_quantize.sh" "$build"

printf '\n== GIF export beside its peers\n'
"$root/bench/compare_gif_export.sh" "$build"
