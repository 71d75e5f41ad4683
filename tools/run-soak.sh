#!/usr/bin/env bash
# Builds the soak program and runs it off-screen in build/soak-run/ with the
# demo's converted character:
#   bash tools/run-soak.sh [frames (10000)] [frames between samples (1000)]
#   bash tools/run-soak.sh --valgrind [frames (200)] [frames between samples (100)]
# It prints resident memory at every sample and fails when memory still climbs
# after warm-up (tools/soak-growth.sh: the slope over the second half of the
# run, against the tolerance stated there) or when the engine's log does not
# close on a balanced "Final memory ratio: 0 (N/N)". With --valgrind the run
# is shorter and goes through memcheck, with Mesa's own findings suppressed by
# tools/valgrind.supp.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
memcheck=()
defaults=(10000 1000)
if [ "${1:-}" = "--valgrind" ]; then
  shift
  defaults=(200 100)
  # llvmpipe's rasterizer threads only slow memcheck down.
  export LP_NUM_THREADS=0
  command -v valgrind >/dev/null || apt-get install -y valgrind
  # --keep-debuginfo: the driver is unloaded before the leak check, and its
  # suppressions name it.
  memcheck=(valgrind --tool=memcheck --error-exitcode=1 --keep-debuginfo=yes --leak-check=full
    --show-leak-kinds=definite,possible --errors-for-leak-kinds=definite,possible
    --suppressions="$root/tools/valgrind.supp" --num-callers=30)
fi
bash "$root/tools/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j"$(nproc)" --target pevrano_soak pevrano-convert
mkdir -p "$root/build/soak-run"
cd "$root/build/soak-run"
"$root/build/tools/convert/pevrano-convert" /usr/share/assimp/models/X/Testwuson.X character.pve >/dev/null
env -u DISPLAY "${memcheck[@]}" "$root/build/examples/pevrano_soak" "${1:-${defaults[0]}}" "${2:-${defaults[1]}}" |
  tee soak-output.txt
grown=0
bash "$root/tools/soak-growth.sh" soak-output.txt || grown=1
summary=$(grep '^Final memory ratio' pevrano_log.txt | tail -n 1)
echo "log: $summary"
[[ $summary =~ ^Final\ memory\ ratio:\ 0\ \(([0-9]+)/([0-9]+)\)$ ]] && [ "${BASH_REMATCH[1]}" = "${BASH_REMATCH[2]}" ] && [ "$grown" = 0 ]
