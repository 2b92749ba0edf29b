#!/usr/bin/env bash
# The GIF export: frames cut from a real photograph become an animated GIF,
# which Tarvex's own import reads back; then one still GIF against a caller's
# palette, and the export's refusals.
#   scripts/demo/gif_export.sh BUILD_DIR OUT_DIR
set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-build/release}
out=${2:-out/demo}/gif-export
tarvex="$build/tools/tarvex"
mkdir -p "$out"

source "$root/scripts/demo/common.sh"

step "GIF export: twelve frames panning across a photograph (scikit-image's astronaut)"
"$root/scripts/ensure-packages.sh" python3-skimage python3-pil
/usr/bin/python3 - "$out" <<'PY'
import sys
from PIL import Image
from skimage import data
photo = data.astronaut()
for k in range(12):
    Image.fromarray(photo[40 + 8 * k:40 + 8 * k + 180, 120 + 10 * k:120 + 10 * k + 240]).save(
        f"{sys.argv[1]}/frame-{k:02d}.png")
PY
show gif -o "$out/pan.gif" "$out"/frame-*.png --delay 0.08 --loop 0 --comment "cut from a photograph"
show gif -o "$out/pan-plain-interlaced.gif" "$out"/frame-*.png --dither none --interlace --loop 2

step "Read back with Tarvex's own import"
show info "$out/pan.gif"
show info "$out/pan-plain-interlaced.gif"

step "One still GIF written against a caller's palette (WriteColormaps)"
show gif -o "$out/still.gif" "$out/frame-00.png" \
  --palette "#000000,#ffffff,#7f7f7f,#c0a080,#203060,#a03020,#e0e0c0,#406040"
show palette "$out/still.gif"

step "Refusals of the export: a code, no file name, nothing left behind"
show call --books WriteFrames png:"$out/frame-00.png" str:"$out/refused.gif" str: 'tensor:real:{0.1}' \
  str:Dither 0 false 'tensor:int:{}' 'tensor:int:{}' 'tensor:int:{0}'
show call WriteFrames png:"$out/frame-00.png" str:"$out/refused.gif" str: 'tensor:real:{0.1}' \
  str:None 0 false 'tensor:int:{}' 'tensor:int:{1,2,3}' 'tensor:int:{0}'
show gif -o "$out/refused.gif" "$out/frame-00.png" "$root/README.md"
