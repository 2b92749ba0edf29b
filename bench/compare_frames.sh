#!/usr/bin/env bash
# Compares the frames that `tarvex frames` composites with ImageMagick's
# coalesced frames, for a few small GIF files shipped by Debian packages.
# Only pixels that are visible in our picture (alpha > 0) are compared; a
# pixel counts as a mismatch when red, green, blue or alpha differ.
#
#   bench/compare_frames.sh [BUILD_DIR]     (default: build)
#
# Installs what it needs with apt-get (run as root). Not part of CI.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
[[ $build = /* ]] || build=$root/$build

packages=(imagemagick tk8.6-doc libtk8.6 libjs-jquery-jstree libjs-jquery-colorbox python3)
files=(
  /usr/share/doc/tk8.6-doc/demos/images/earth.gif
  /usr/share/doc/tk8.6-doc/demos/images/earthris.gif
  /usr/share/javascript/jstree/themes/default/throbber.gif
  /usr/share/doc/libjs-jquery-colorbox/examples/example1/images/loading.gif
  /usr/share/tcltk/tk8.6/images/tai-ku.gif
)

missing=()
for p in "${packages[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
fi

# The real ImageMagick, not whatever else may be called convert on the PATH.
magick=$(command -v /usr/bin/convert-im6.q16 || command -v /usr/bin/convert)

cmake --build "$build" --target Tarvex tarvex >/dev/null
tarvex=$build/tools/tarvex

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

printf '%-28s %7s %7s %12s %12s %12s\n' file frames im-frames compared mismatched hidden-diff
total_compared=0 total_mismatched=0
for gif in "${files[@]}"; do
  name=$(basename "$gif" .gif)
  dir=$work/$name
  mkdir -p "$dir/ours" "$dir/im"
  "$tarvex" frames "$gif" -o "$dir/ours" >/dev/null
  "$magick" "$gif" -coalesce +repage -depth 8 "rgba:$dir/im/%03d.rgba"
  for png in "$dir"/ours/frame-*.png; do
    "$magick" "$png" -depth 8 "rgba:${png%.png}.rgba"
  done
  read -r frames imframes compared mismatched hidden < <(python3 - "$dir" <<'PY'
import glob, sys
d = sys.argv[1]
ours = sorted(glob.glob(d + "/ours/frame-*.rgba"))
theirs = sorted(glob.glob(d + "/im/*.rgba"))
compared = mismatched = hidden = 0
for a, b in zip(ours, theirs):
    x, y = open(a, "rb").read(), open(b, "rb").read()
    if len(x) != len(y):
        mismatched += len(x) // 4
        continue
    for i in range(0, len(x), 4):
        if x[i + 3] == 0:
            hidden += y[i + 3] != 0  # transparent for us, visible for ImageMagick
            continue
        compared += 1
        mismatched += x[i:i + 4] != y[i:i + 4]
print(len(ours), len(theirs), compared, mismatched, hidden)
PY
)
  printf '%-28s %7s %7s %12s %12s %12s\n' "$name.gif" "$frames" "$imframes" "$compared" "$mismatched" "$hidden"
  total_compared=$((total_compared + compared))
  total_mismatched=$((total_mismatched + mismatched))
done
echo "visible pixels compared: $total_compared, mismatched: $total_mismatched"
[[ $total_mismatched -eq 0 ]]
