#!/usr/bin/env bash
# Regenerates the gallery's screenshots, docs/gallery/*.png: each example
# off-screen at 320x240 for the frames its test checks, and the demo's last
# frame (docs/gallery/demo.png) that the README shows.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/tools/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
examples=(01_window:3 02_lit_scene:30 03_textures:30 04_character:30 05_interface:10 06_fonts:3 07_film:20
  08_particles:45 09_picking:3 10_offscreen:2)
targets=(pevrano_demo pevrano-convert)
for entry in "${examples[@]}"; do targets+=("gallery_${entry%%:*}"); done
cmake --build "$root/build" -j"$(nproc)" --target "${targets[@]}"
out="$root/docs/gallery"
run="$root/build/gallery-run"
mkdir -p "$out" "$run"
cd "$run"
for entry in "${examples[@]}"; do
  name=${entry%%:*}
  env -u DISPLAY "$root/build/examples/gallery/gallery_$name" --frames "${entry#*:}" --size 320x240 \
    --screenshot "$out/$name.png" >/dev/null
  echo "wrote docs/gallery/$name.png"
done
# The demo at its own 640x480 (its interface would cover a smaller picture),
# with its converted character.
"$root/build/tools/convert/pevrano-convert" /usr/share/assimp/models/X/Testwuson.X character.pve >/dev/null
env -u DISPLAY "$root/build/examples/pevrano_demo" >/dev/null
cp screenshot.png "$out/demo.png"
echo "wrote docs/gallery/demo.png"
