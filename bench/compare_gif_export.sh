#!/usr/bin/env bash
# Writes the same 100 frames (640x480, cut from a photograph) as one animated
# GIF with WriteFrames and with the tools a user would pick instead, one after
# another on one core, and prints each one's time and its ratio to the floor:
# giflib encoding already-indexed frames and nothing else.
#
#   bench/compare_gif_export.sh [BUILD_DIR]     (default: build/release)
#
# Peers: Pillow's save(save_all=True), ffmpeg with a palette per frame,
# ImageMagick's convert, and gifsicle re-encoding a GIF (what it applies to).
# All diffuse errors Floyd-Steinberg style where they can be told to.
# Installs what it needs with apt-get (run as root). Not part of CI.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
[[ $build = /* ]] || build=$root/$build

"$root/scripts/ensure-packages.sh" python3-skimage python3-pil imagemagick ffmpeg gifsicle
python=/usr/bin/python3
# The real ImageMagick, not whatever else may be called convert on the PATH.
magick=$(command -v /usr/bin/convert-im6.q16 || command -v /usr/bin/convert)

cmake --build "$build" --target write_frames_benchmark >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
frames=$work/frames.rgb
"$python" "$root/bench/photo_frames.py" "$frames" 100 640 480

TARVEX_BENCH_FRAMES=$frames taskset -c 0 "$build/bench/write_frames_benchmark" \
  --benchmark_format=json --benchmark_min_time=1 >"$work/ours.json"

taskset -c 0 "$python" - "$work" "$frames" "$magick" <<'PY'
import json, os, subprocess, sys, time
import numpy as np
from PIL import Image

work, frames_file, magick = sys.argv[1:4]
W, H, N = 640, 480, 100

ours = {b["name"]: b["real_time"] / 1000.0 for b in json.load(open(work + "/ours.json"))["benchmarks"]}
floor = ours["giflibFloor/real_time"]
rows = [("WriteFrames, Floyd-Steinberg", ours["writeFramesBenchmark/FloydSteinberg/real_time"]),
        ("WriteFrames, no dithering", ours["writeFramesBenchmark/None/real_time"])]

def timed(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return time.perf_counter() - start

data = np.fromfile(frames_file, dtype=np.uint8).reshape(N, H, W, 3)
images = [Image.fromarray(f) for f in data]
start = time.perf_counter()
images[0].save(work + "/pillow.gif", save_all=True, append_images=images[1:], duration=100, loop=0)
rows.append(("Pillow save(save_all=True)", time.perf_counter() - start))

rows.append(("ffmpeg, palette per frame", timed([
    "ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", "rgb24", "-s", f"{W}x{H}", "-r", "10",
    "-i", frames_file, "-filter_complex",
    "split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1:dither=floyd_steinberg",
    "-threads", "1", "-y", work + "/ffmpeg.gif"])))

rows.append(("ImageMagick convert", timed([
    magick, "-size", f"{W}x{H}", "-depth", "8", f"rgb:{frames_file}[0-{N - 1}]",
    "-dither", "FloydSteinberg", "-delay", "10", "-loop", "0", work + "/magick.gif"])))

rows.append(("gifsicle -O1, re-encoding a GIF", timed([
    "gifsicle", "--no-warnings", "-O1", work + "/pillow.gif", "-o", work + "/gifsicle.gif"])))

print(f"{'writer (100 frames of 640x480, one core)':44} {'seconds':>8} {'frames/s':>9} {'x floor':>8}")
print(f"{'giflib encode of indexed frames (floor)':44} {floor:8.3f} {N / floor:9.1f} {1:8.2f}")
for name, seconds in rows:
    print(f"{name:44} {seconds:8.3f} {N / seconds:9.1f} {seconds / floor:8.2f}")
PY
