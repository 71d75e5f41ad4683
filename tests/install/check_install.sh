#!/usr/bin/env bash
# Installs the built engine into a temporary prefix, then builds and runs a
# small outside application against it: found with CMake's
# find_package(Pevrano), with pkg-config, and with pkg-config's library
# folder as run path; the installed tools must run from the prefix. Each run
# must write the application's own line into the log (the shape of the whole
# log is the library-load test's business). The examples gallery must build
# against the prefix too.
# Usage: check_install.sh SRC_DIR BUILD_DIR
set -euo pipefail
src=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/pevrano-install-XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

fail() { echo "FAIL: $*" >&2; exit 1; }

# The tools are installed with the engine when the build makes them.
targets=(pevrano)
[ ! -d "$build/tools" ] || targets+=(pevrano-convert pevrano-view pevrano-font)
cmake --build "$build" --target "${targets[@]}" >/dev/null
cmake --install "$build" --prefix "$prefix" >/dev/null
[ -f "$prefix/include/pevrano/pevrano.h" ] || fail "pevrano.h not installed"

# The installed headers are exactly pevrano.h and what it includes, directly or
# not: internal headers stay out, and nothing it needs is missing.
include_dir="$prefix/include/pevrano"
declare -A reached=()
pending=(pevrano.h)
while [ ${#pending[@]} -gt 0 ]; do
  header=${pending[0]}
  pending=("${pending[@]:1}")
  [ -z "${reached[$header]:-}" ] || continue
  reached[$header]=1
  [ -f "$include_dir/$header" ] || fail "$header is included but not installed"
  while IFS= read -r next; do pending+=("$next"); done < <(sed -n 's/^#include "\(.*\)"$/\1/p' "$include_dir/$header")
done
installed=$(cd "$include_dir" && find . -type f | sed 's|^\./||' | sort)
wanted=$(printf '%s\n' "${!reached[@]}" | sort)
[ "$installed" = "$wanted" ] || fail "installed headers are not those pevrano.h reaches: $(diff <(echo "$wanted") <(echo "$installed") || true)"

mkdir -p "$work/app"
cat > "$work/app/main.cpp" <<'CPP'
#include <pevrano.h>

// Links the engine alone: its events need nothing of SDL.
int main() {
    PVEVENT event;
    event.type = PV_EVENT_KEY_DOWN;
    event.key = 'h';
    PEVRANO::pushEvent(&event);
    while (PEVRANO::pollEvent(&event))
        if (PEVRANO::isKeyDown('h'))
            kvfLog("hello\n");
    return 0;
}
CPP
cat > "$work/app/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.16)
project(OutsideApplication LANGUAGES C CXX)
set(CMAKE_CXX_STANDARD 17)
find_package(Pevrano REQUIRED)
add_executable(outside main.cpp)
target_link_libraries(outside PRIVATE Pevrano::pevrano)
CMAKE

libdir=$(dirname "$(find "$prefix" -name 'libpevrano.so' | head -n 1)")
[ -n "$libdir" ] || fail "libpevrano.so not installed"

# A sanitized build of the library needs its runtime loaded first in the
# outside application, which is built without it.
preload=$(ldd "$libdir/libpevrano.so" | awk '/libasan/ { print $3 }')

# Runs an application in a fresh directory and looks for its line in the log.
check_run() {
  local name=$1 program=$2
  local run="$work/run-$name"
  mkdir -p "$run"
  (cd "$run" && LD_LIBRARY_PATH="$libdir" LD_PRELOAD="$preload" "$program" >stdout.txt) || fail "$name: the application failed"
  grep -qx 'hello' "$run/pevrano_log.txt" || { cat "$run/pevrano_log.txt"; fail "$name: no line of the application in the log"; }
  echo "$name: the application ran and logged"
}

cmake -S "$work/app" -B "$work/app-build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/app-build" >/dev/null
check_run cmake "$work/app-build/outside"

export PKG_CONFIG_PATH="$libdir/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
# shellcheck disable=SC2046
c++ -std=c++17 "$work/app/main.cpp" -o "$work/outside-pkgconfig" $(pkg-config --cflags --libs pevrano)
check_run pkgconfig "$work/outside-pkgconfig"

# Built with the run path the README gives, the application finds the
# engine without LD_LIBRARY_PATH.
# shellcheck disable=SC2046
c++ -std=c++17 "$work/app/main.cpp" -o "$work/outside-rpath" $(pkg-config --cflags --libs pevrano) \
  -Wl,-rpath,"$(pkg-config --variable=libdir pevrano)"
(cd "$work" && LD_PRELOAD="$preload" env -u LD_LIBRARY_PATH "$work/outside-rpath" >/dev/null) ||
  fail "rpath: the application built with pkg-config's library folder as run path failed"
echo "rpath: the application ran from its run path"

# The installed tools run from the prefix as they are, and their output is
# theirs alone.
if [ -d "$build/tools" ]; then
  for tool in pevrano-convert pevrano-view; do
    help=$(cd "$work" && LD_PRELOAD="$preload" env -u LD_LIBRARY_PATH "$prefix/bin/$tool" --help) ||
      fail "$tool: the installed tool did not run"
    [[ $help == "usage: $tool "* ]] || fail "$tool: --help printed more than the help: $help"
  done
  echo "tools: the installed tools ran from the prefix"

  # The examples gallery builds against the prefix as an application would,
  # its fonts and character made by the installed tools. Under the sanitizers
  # the preloaded runtime also lands in the compiler, whose own leaks are not
  # ours to report.
  export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"
  LD_PRELOAD="$preload" cmake -S "$src/examples/gallery" -B "$work/gallery-build" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE=Release >/dev/null || fail "gallery: the project did not configure against the prefix"
  LD_PRELOAD="$preload" cmake --build "$work/gallery-build" -j2 >/dev/null ||
    fail "gallery: the examples did not build against the prefix"
  echo "gallery: the examples built against the prefix"
fi
