#!/usr/bin/env bash
# Fuzzes one target or all of them with libFuzzer for a given time each:
#   bash tools/fuzz.sh [target|all] [seconds]     (default: all, 600)
# Builds with clang in build-fuzz/ and runs in build-fuzz/run-<target>/ (the
# engine's log lands there). The committed seeds in fuzz/corpus/<target>/ are
# read, never written: new inputs go to build-fuzz/run-<target>/corpus/, and
# crashing inputs are left as build-fuzz/run-<target>/crash-*.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
target=${1:-all}
seconds=${2:-600}
build="$root/build-fuzz"
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DPEVRANO_FUZZ=ON -DPEVRANO_TESTS=OFF -DPEVRANO_BENCH=OFF -DPEVRANO_EXAMPLES=OFF \
  -DPEVRANO_TOOLS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
if [ "$target" = all ]; then
  targets=$(cd "$build/fuzz" && ls fuzz_* | sed 's/^fuzz_//')
else
  targets=$target
fi
export ASAN_OPTIONS="detect_leaks=1:suppressions=$root/tools/asan.supp"
export LSAN_OPTIONS="suppressions=$root/tools/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
for t in $targets; do
  mkdir -p "$build/run-$t/corpus" "$root/fuzz/corpus/$t"
  echo "== fuzzing $t for $seconds s"
  (cd "$build/run-$t" && "$build/fuzz/fuzz_$t" -max_total_time="$seconds" -print_final_stats=1 \
    "$build/run-$t/corpus" "$root/fuzz/corpus/$t" >/dev/null 2>"$build/run-$t/fuzz.log") || {
    tail -n 40 "$build/run-$t/fuzz.log"; exit 1; }
  grep -E '^stat::number_of_executed_units|^stat::peak_rss_mb' "$build/run-$t/fuzz.log" || true
done
