#!/usr/bin/env bash
# Times DitherImage ("None" and "FloydSteinberg") beside Pillow's remap to the
# same palette (quantize(palette=..., dither=FLOYDSTEINBERG / NONE)) on
# Debian's sample photographs resized to 2048x2048 8-bit RGB, each mapped to
# a 256-colour median-cut palette of itself. Both run on one core in the same
# run; the ratios are DitherImage's time over Pillow's Floyd-Steinberg time.
# Pillow's "none" is shown for reference only: it looks colours up
# approximately, where DitherImage answers the exact nearest colour.
#
#   bench/compare_dither.sh [BUILD_DIR]     (default: build/release)
#
# Installs Pillow and the photographs with apt-get when missing (run as root).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
[[ $build = /* ]] || build=$root/$build
python=/usr/bin/python3  # Debian's, which sees Debian's Pillow and skimage

missing=()
for p in python3 python3-pil python3-skimage; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
fi

cmake --build "$build" --target Tarvex dither_benchmark >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

taskset -c 0 "$python" - "$work" >"$work/pillow.txt" <<'PY'
import sys, time
from PIL import Image
import skimage.data

out = sys.argv[1]
for name in ("astronaut", "coffee", "chelsea"):
    photo = Image.fromarray(getattr(skimage.data, name)()).convert("RGB")
    photo = photo.resize((2048, 2048), Image.Resampling.LANCZOS)
    colors = photo.quantize(256, method=Image.Quantize.MEDIANCUT).getpalette()[:768]
    open(f"{out}/{name}.rgb", "wb").write(photo.tobytes())
    open(f"{out}/{name}.pal", "wb").write(bytes(colors))
    palette = Image.new("P", (1, 1))
    palette.putpalette(colors)
    for label, dither in (("FloydSteinberg", Image.Dither.FLOYDSTEINBERG), ("none", Image.Dither.NONE)):
        times = []
        for _ in range(5):
            start = time.perf_counter()
            photo.quantize(palette=palette, dither=dither)
            times.append(time.perf_counter() - start)
        print(name, label, min(times) * 1000)
PY

TARVEX_BENCH_PHOTOS=$work taskset -c 0 "$build/bench/dither_benchmark" \
  --benchmark_filter='DitherImage/[a-z]+/' --benchmark_repetitions=3 \
  --benchmark_report_aggregates_only=true --benchmark_format=json >"$work/tarvex.json"

"$python" - "$work/pillow.txt" "$work/tarvex.json" <<'PY'
import json, sys

pillow = {}
for line in open(sys.argv[1]):
    name, method, ms = line.split()
    pillow[name, method] = float(ms)
ours = {}
for run in json.load(open(sys.argv[2]))["benchmarks"]:
    if run.get("aggregate_name") != "median":
        continue
    _, name, method = run["run_name"].split("/")[:3]
    ours[name, method] = run["real_time"]

print(f"{'photograph':<12} {'method':<15} {'Tarvex ms':>10} {'Pillow FS ms':>13} {'ratio':>6} {'Pillow none ms':>15}")
for name in sorted({n for n, _ in ours}):
    fs = pillow[name, "FloydSteinberg"]
    for method in ("None", "FloydSteinberg"):
        t = ours[name, method]
        print(f"{name:<12} {method:<15} {t:10.1f} {fs:13.1f} {t / fs:6.2f} {pillow[name, 'none']:15.1f}")
PY
