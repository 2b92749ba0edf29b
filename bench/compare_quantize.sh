#!/usr/bin/env bash
# Times ImageQuantize (each method, 16 and 256 colours, "None" and
# "FloydSteinberg") and UniqueColors beside Pillow's quantize (MEDIANCUT,
# FASTOCTREE, LIBIMAGEQUANT) and numpy's unique count of packed colours, on
# Debian's sample photographs resized to 2048x2048 8-bit RGB, one core, in
# one run. Ratios are Pillow's (or numpy's) time over Tarvex's: above 1 means
# Tarvex is faster.
#
#   bench/compare_quantize.sh [BUILD_DIR]     (default: build/release)
#
# Installs Pillow, numpy and the photographs with apt-get when missing.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
[[ $build = /* ]] || build=$root/$build
python=/usr/bin/python3  # Debian's, which sees Debian's Pillow, numpy and skimage

"$root/scripts/ensure-packages.sh" python3 python3-pil python3-numpy python3-skimage
cmake --build "$build" --target Tarvex quantize_benchmark >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

taskset -c 0 "$python" - "$work" >"$work/peers.txt" <<'PY'
import sys, time
import numpy as np
from PIL import Image
import skimage.data

def best(job, runs=3):
    times = []
    for _ in range(runs):
        start = time.perf_counter()
        job()
        times.append(time.perf_counter() - start)
    return min(times) * 1000

out = sys.argv[1]
methods = {"MEDIANCUT": Image.Quantize.MEDIANCUT, "FASTOCTREE": Image.Quantize.FASTOCTREE,
           "LIBIMAGEQUANT": Image.Quantize.LIBIMAGEQUANT}
for name in ("astronaut", "coffee", "chelsea"):
    photo = Image.fromarray(getattr(skimage.data, name)()).convert("RGB")
    photo = photo.resize((2048, 2048), Image.Resampling.LANCZOS)
    open(f"{out}/{name}.rgb", "wb").write(photo.tobytes())
    for colors in (16, 256):
        for label, method in methods.items():
            ms = best(lambda: photo.quantize(colors, method=method, dither=Image.Dither.NONE))
            print(name, label, colors, ms)
    pixels = np.asarray(photo).astype(np.uint32)
    packed = (pixels[..., 0] << 16) | (pixels[..., 1] << 8) | pixels[..., 2]
    print(name, "numpy-unique", 0, best(lambda: np.unique(packed).size))
PY

TARVEX_BENCH_PHOTOS=$work taskset -c 0 "$build/bench/quantize_benchmark" \
  --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_format=json >"$work/tarvex.json"

"$python" - "$work/peers.txt" "$work/tarvex.json" <<'PY'
import json, sys

peers = {}
for line in open(sys.argv[1]):
    name, label, colors, ms = line.split()
    peers[name, label, int(colors)] = float(ms)
ours, rates = {}, {}
for run in json.load(open(sys.argv[2]))["benchmarks"]:
    if run.get("aggregate_name") != "median":
        continue
    parts = [p for p in run["run_name"].split("/") if p != "real_time"]
    ours[tuple(parts[1:])] = run["real_time"]
    rates[tuple(parts[1:])] = run.get("Mpixel/s", 0.0)

names = sorted({key[0] for key in ours})
print("ImageQuantize, 2048x2048 RGB photographs, one core; ratio = peer time / Tarvex time")
print(f"{'photograph':<10} {'method':<11} {'colours':>7} {'dither':<15} {'ms':>8} {'Mpx/s':>7}"
      f" {'/MEDIANCUT':>10} {'/FASTOCTREE':>11} {'/LIBIMAGEQUANT':>14}")
for name in names:
    for method in ("median-cut", "wu", "octree"):
        for colors in (16, 256):
            for dither in ("None", "FloydSteinberg"):
                key = (name, method, str(colors), dither)
                t = ours[key]
                ratios = [peers[name, p, colors] / t for p in ("MEDIANCUT", "FASTOCTREE", "LIBIMAGEQUANT")]
                print(f"{name:<10} {method:<11} {colors:>7} {dither:<15} {t:8.1f} {rates[key]:7.1f}"
                      f" {ratios[0]:10.2f} {ratios[1]:11.2f} {ratios[2]:14.2f}")
print()
print("UniqueColors beside numpy.unique of packed colours; ratio = numpy time / Tarvex time")
for name in names:
    numpy = peers[name, "numpy-unique", 0]
    for flavour in ("hashed", "ordered"):
        t = ours[(name, flavour)]
        print(f"{name:<10} {flavour:<8} {t:8.1f} ms   numpy {numpy:8.1f} ms   ratio {numpy / t:6.2f}")
PY
