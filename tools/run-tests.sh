#!/usr/bin/env bash
# Checks the code style, then builds and runs the whole test suite: a normal
# build off-screen, the display tests again under a virtual X server, then
# everything once more with AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)
bash "$root/tools/deps.sh"

echo "== code style (.clang-format)"
(cd "$root" && find pevrano.h foundation math core scene assets gui video tests tools examples bench fuzz \
  \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format --dry-run --Werror)

echo "== reference comments of the installed headers (doxygen)"
if command -v doxygen >/dev/null; then
  bash "$root/tools/docs.sh"
else
  echo "doxygen is not installed: skipped"
fi

build_and_test() {
  local dir=$1; shift
  cmake -S "$root" -B "$dir" "$@" >/dev/null
  cmake --build "$dir" -j"$jobs"
  (cd "$dir" && env -u DISPLAY ctest --output-on-failure -j"$jobs")
}

echo "== tests, off-screen"
build_and_test "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPEVRANO_WERROR=ON

echo "== display tests, under Xvfb"
# -noreset: by default the server resets whenever its last client leaves and
# refuses connections meanwhile, which the next test process would meet.
(cd "$root/build" && xvfb-run -a -s "-screen 0 1024x768x24 -noreset" \
  ctest --output-on-failure -L display -j1)

echo "== tests with AddressSanitizer and UndefinedBehaviorSanitizer"
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:suppressions=$root/tools/asan.supp"
export LSAN_OPTIONS="suppressions=$root/tools/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
build_and_test "$root/build-asan" -DCMAKE_BUILD_TYPE=Debug -DPEVRANO_SANITIZE=ON -DPEVRANO_WERROR=ON \
  -DPEVRANO_BENCH=OFF
