#!/usr/bin/env bash
# Builds the benchmarks and runs all of them off-screen; extra arguments go to
# the benchmark binary (--benchmark_filter=Tga, --benchmark_repetitions=3, ...).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/tools/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j"$(nproc)" --target pevrano_bench
# The benchmarks run in build/bench-run: the engine's log and the files they
# write land there. No X display, so that every run draws into the same
# off-screen surface.
mkdir -p "$root/build/bench-run"
cd "$root/build/bench-run"
exec env -u DISPLAY "$root/build/bench/pevrano_bench" "$@"
