#!/usr/bin/env bash
# Installs the built engine into a temporary prefix, then builds and runs a
# small outside application against it twice: found with CMake's
# find_package(Pevrano) and with pkg-config. Each run's log must go from the
# start banner to the memory summary around the application's own line.
# Usage: check_install.sh SRC_DIR BUILD_DIR
set -euo pipefail
src=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/pevrano-install-XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

fail() { echo "FAIL: $*" >&2; exit 1; }

cmake --build "$build" --target pevrano >/dev/null
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

int main() {
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

# Runs an application in a fresh directory and checks the whole shape of its log.
check_run() {
  local name=$1 program=$2
  local run="$work/run-$name"
  mkdir -p "$run"
  (cd "$run" && LD_LIBRARY_PATH="$libdir" LD_PRELOAD="$preload" "$program" >stdout.txt) || fail "$name: the application failed"
  local log="$run/pevrano_log.txt"
  [ -f "$log" ] || fail "$name: no log"
  local time='[0-9]{1,2}/[0-9]{1,2}/[0-9]{4} [0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\.[0-9]{1,3}'
  local dashes='-------------------------------------------------------'
  local expected="$work/expected-$name.txt"
  {
    echo "^\[Kolvane foundation 0\.4 started at $time\]\$"
    echo "^$dashes\$"
    echo '^$'
    echo '^   Log file for Pevrano 3D Graphics Engine for Axim v1\.6\.6a \(debug\)$'
    echo '^hello$'
    echo '^   Log completed$'
    echo '^$'
    echo "^$dashes\$"
    echo '^Final memory ratio: 0 \(1/1\)$'
    echo '^Max\. physical memory usage: [0-9]+\.[0-9]{2} mb \(-?[0-9]+ bytes\)$'
    echo '^Total allocated memory \(kvfMalloc\): 0\.25 mb \(262144 bytes\)$'
    echo "^\[Kolvane foundation 0\.4 terminated at $time\]\$"
  } >"$expected"
  local lines
  lines=$(wc -l <"$log")
  [ "$lines" -eq "$(wc -l <"$expected")" ] || { cat "$log"; fail "$name: the log has $lines lines"; }
  local number=0
  while IFS= read -r pattern; do
    number=$((number + 1))
    sed -n "${number}p" "$log" | grep -Eq "$pattern" || { cat "$log"; fail "$name: line $number does not match $pattern"; }
  done <"$expected"
  echo "$name: log as expected"
}

cmake -S "$work/app" -B "$work/app-build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/app-build" >/dev/null
check_run cmake "$work/app-build/outside"

export PKG_CONFIG_PATH="$libdir/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
# shellcheck disable=SC2046
c++ -std=c++17 "$work/app/main.cpp" -o "$work/outside-pkgconfig" $(pkg-config --cflags --libs pevrano)
check_run pkgconfig "$work/outside-pkgconfig"
