#!/usr/bin/env bash
# The demonstration: every service built so far, driven through the `tarvex`
# tool, which loads the plug-in exactly as the kernel does.
set -euo pipefail

build=${1:-build/release}
tarvex="$build/tools/tarvex"
out=${TARVEX_DEMO_OUT:-out/demo}
mkdir -p "$out"

source "$(dirname "$0")/demo/common.sh"
printf 'The commands below run as shown with the tool on the search path:\n'
printf '  export PATH=%s:"$PATH"\n' "$(quoted "$(cd "$(dirname "$tarvex")" && pwd)")"

step "The tool and the plug-in"
show --version

step "Life cycle and the small exports: each call loads, initialises, calls and unloads"
show call StringSeparator
show call ClearCache str:never-read.gif

step "GIF import: a small animation with transparency and disposal"
show sample-gif "$out/animation.gif"
show info "$out/animation.gif"
show info --expr "$out/animation.gif"
show palette "$out/animation.gif"
show frames "$out/animation.gif" -o "$out/frames"
show call ReadAllFrames str:"$out/animation.gif" --out "$out/all-frames.png"

step "The same animation ten times larger, transparency as a checkerboard, written by the export"
"$(dirname "$0")/ensure-packages.sh" python3-pil
"$(dirname "$0")/demo/enlarge_frames.py" "$out/frames" "$out/frames-x10" 10
show gif -o "$out/animation-x10.gif" "$out"/frames-x10/frame-*.png --delay 0.5,0.3,0.3,0.3,0.2 --dither none

step "Dithering: a photo-like image against a small palette, both ways"
palette="#000000,#ffffff,#ff0000,#00ff00,#0000ff,#ffff00,#00ffff,#ff00ff"
show sample-image "$out/photo.png"
show dither "$out/photo.png" -o "$out/photo-nearest.png" --palette "$palette" --method none
show dither "$out/photo.png" -o "$out/photo-floyd-steinberg.png" --palette "$palette" --method floyd-steinberg
show call --books DitherImage png:"$out/photo.png" 'raw:uint8:{{0,0,0},{255,255,255}}' str:FloydSteinberg false false --out "$out/photo-black-white.png"

"$(dirname "$0")/demo/gif_export.sh" "$build" "$out"

step "Refusals: each export answers its own code, writes no result and leaves nothing behind"
show call --books DitherImage png:"$out/photo.png" 'raw:uint8:{{0,0,0},{255,255,255}}' str:Dither false false
show call DitherImage png:"$out/photo.png" 'raw:uint8:{{0,0,0,0}}' str:None false false
show call --no-init DitherImage png:"$out/photo.png" 'raw:uint8:{{0,0,0}}' str:None false false
show call --argc 2 DitherImage png:"$out/photo.png" 'raw:uint8:{{0,0,0}}' str:None false false
show call WriteFrames int:1
show call --argc 0 ClearCache str:x.gif
show call ReadOneFrame str:"$out/no-such-file.gif" int:1
show call ReadOneFrame str:"$out/animation.gif" int:9
show call ReadFileMetadata '{"a.gif", "b.gif"}'

printf '\nAll results are in %s\n' "$out"
