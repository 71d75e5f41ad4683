#!/usr/bin/env bash
# Builds the engine and runs its demo; extra arguments go to the demo
# (a PEVRANO_* configuration file, for instance).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/tools/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j"$(nproc)" --target pevrano_demo pevrano-convert
# The demo runs in build/demo-run (its log and screenshot land there): paths
# to existing files given as arguments are made absolute first.
args=()
for argument in "$@"; do
  if [ -e "$argument" ]; then
    argument="$(cd "$(dirname "$argument")" && pwd)/$(basename "$argument")"
  fi
  args+=("$argument")
done
mkdir -p "$root/build/demo-run"
cd "$root/build/demo-run"
# The demo's animated character, converted from a model of assimp-testmodels.
"$root/build/tools/convert/pevrano-convert" /usr/share/assimp/models/X/Testwuson.X character.pve >/dev/null
"$root/build/examples/pevrano_demo" "${args[@]}"
