#!/usr/bin/env bash
# Import speed and memory, on one core, in one run:
#  - ReadAllFrames beside giflib's bare DGifSlurp of the same 100-frame
#    640 x 480 animation, panned across photographs that Debian ships;
#  - the peak resident memory of `tarvex info` and `tarvex frames` on that
#    file and on large or hostile files built here.
#
#   bench/compare_import.sh [BUILD_DIR]     (default: build/release)
#
# PLUGIN=path/libTarvex.so measures another build of the plug-in with the same
# tool. Installs what it needs with apt-get (run as root). Not part of CI.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
[[ $build = /* ]] || build=$root/$build

packages=(python3-skimage python3-pil time)
missing=()
for p in "${packages[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

cmake --build "$build" --target Tarvex tarvex import_benchmark >/dev/null
tarvex=$build/tools/tarvex
plugin=${PLUGIN:-$build/src/libTarvex.so}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Debian's interpreter, which sees Debian's skimage and Pillow.
/usr/bin/python3 - "$work" <<'PY'
import struct, sys
from PIL import Image
from skimage import data

work = sys.argv[1]

def animation():
    photos = [Image.fromarray(p).convert("RGB").resize((1024, 768))
              for p in (data.astronaut(), data.coffee(), data.chelsea())]
    frames = []
    for i in range(100):
        photo = photos[i * len(photos) // 100]
        x, y = (i * 37) % 384, (i * 23) % 288
        frames.append(photo.crop((x, y, x + 640, y + 480)).quantize(256))
    frames[0].save(f"{work}/pan.gif", save_all=True, append_images=frames[1:],
                   duration=40, loop=0, optimize=False)

def solid_frames(count, colors):
    frames = [Image.new("P", (1000, 1000), i % 2) for i in range(count)]
    for f in frames:
        f.putpalette(colors)
    frames[0].save(f"{work}/400-frames.gif", save_all=True, append_images=frames[1:],
                   duration=10, optimize=False, disposal=1)

def screen(width, height, table=b""):
    flags = 0x80 if table else 0
    return b"GIF89a" + struct.pack("<HHBBB", width, height, flags, 0, 0) + table

# One 1 x 1 image: clear, index 0, end of information in 3-bit codes.
pixel = b"\x2c" + struct.pack("<HHHHB", 0, 0, 1, 1, 0) + b"\x02\x02\x44\x01\x00"
control = b"\x21\xf9\x04\x00\x0a\x00\x00\x00"

animation()
solid_frames(400, [255, 0, 0, 0, 0, 255])
open(f"{work}/dropped-frame.gif", "wb").write(screen(28781, 25964) + pixel + b"\x3b")
open(f"{work}/huge-screen.gif", "wb").write(screen(16384, 16384, b"\xff\0\0\0\0\xff") + pixel + b"\x3b")
open(f"{work}/2000-pixels.gif", "wb").write(
    screen(1000, 1000, b"\xff\0\0\0\0\xff") + (control + pixel) * 2000 + b"\x3b")
PY

echo "== ReadAllFrames beside giflib's DGifSlurp (pan.gif, 100 frames of 640 x 480)"
TARVEX_IMPORT_GIF=$work/pan.gif TARVEX_PLUGIN=$plugin taskset -c 0 "$build/bench/import_benchmark" \
  --benchmark_min_time=1 --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$work/times.json" --benchmark_out_format=json
/usr/bin/python3 - "$work/times.json" <<'PY'
import json, sys
medians = {b["run_name"].split("/")[0]: b for b in json.load(open(sys.argv[1]))["benchmarks"]
           if b.get("aggregate_name") == "median"}
for clock in ("real_time", "cpu_time"):
    ours, giflib = medians["readAllFrames"][clock], medians["giflibSlurp"][clock]
    host = medians["hostResultImage"][clock]
    print(f"median {clock}: ReadAllFrames {ours:.1f} ms, DGifSlurp {giflib:.1f} ms: ratio {ours / giflib:.2f}"
          f" ({(ours - host) / giflib:.2f} without the host's {host:.1f} ms for the result image)")
backwards = medians["readFramesBackwards"]["real_time"]
print(f"ReadOneFrame for every frame, last to first: {backwards:.1f} ms,"
      f" {backwards / medians['readAllFrames']['real_time']:.2f}x ReadAllFrames")
PY

peak() {  # peak resident memory of one tool run, in MB, and its exit status
  local status=0
  /usr/bin/time -f %M -o "$work/rss" "$tarvex" --plugin "$plugin" "$@" >/dev/null 2>&1 || status=$?
  printf '%8.1f MB (exit %d)' "$(($(tail -n1 "$work/rss") / 100))e-1" "$status"
}

echo
echo "== Peak resident memory"
printf '%-20s %10s %-22s %-22s\n' file size "tarvex info" "tarvex frames"
for name in pan 400-frames dropped-frame huge-screen 2000-pixels; do
  file=$work/$name.gif
  rm -rf "$work/out" && mkdir "$work/out"
  printf '%-20s %10s %-22s %-22s\n' "$name.gif" "$(stat -c %s "$file")" \
    "$(peak info "$file")" "$(peak frames "$file" -o "$work/out")"
done
