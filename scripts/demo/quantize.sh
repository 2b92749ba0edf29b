#!/usr/bin/env bash
# The demonstration's quantization part: a photograph reduced by each method
# to 16 and 256 colours, with and without Floyd-Steinberg, laid out on one
# contact sheet with the colours each result really holds.
#   scripts/demo/quantize.sh BUILD_DIR OUT_DIR
set -euo pipefail

build=$1
out=$2
tarvex="$build/tools/tarvex"
here=$(dirname "$0")
source "$here/common.sh"
python=/usr/bin/python3  # Debian's, which sees Debian's Pillow and skimage
"$here/../ensure-packages.sh" python3-pil python3-skimage

step "Quantization: a photograph, each method, 16 and 256 colours, with and without dithering"
sheet="$out/quantize"
mkdir -p "$sheet"
"$python" -c 'import sys, skimage.data; from PIL import Image
Image.fromarray(skimage.data.astronaut()).save(sys.argv[1])' "$sheet/astronaut.png"
show colors "$sheet/astronaut.png"
for method in median-cut wu octree; do
  for colors in 16 256; do
    for dither in none floyd-steinberg; do
      result="$sheet/$method-$colors-$dither.png"
      show quantize "$sheet/astronaut.png" -o "$result" --method "$method" --colors "$colors" --dither "$dither"
      printf '%s %s %s %s\n' "$method" "$colors" "$dither" "$("$tarvex" colors "$result")" >>"$sheet/counts.txt"
    done
  done
done
show quantize "$sheet/astronaut.png" -o "$sheet/wu-16-none.png" --colors 16 --dither none \
  --palette-out "$sheet/wu-16.txt"
show dither "$sheet/astronaut.png" -o "$sheet/astronaut-wu-16-palette.png" --palette "$sheet/wu-16.txt"

"$python" "$here/contact_sheet.py" "$sheet" "$sheet/counts.txt" "$out/quantize-contact-sheet.png"
rm "$sheet/counts.txt"
printf 'Contact sheet: %s\n' "$out/quantize-contact-sheet.png"
