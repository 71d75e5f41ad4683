#!/usr/bin/env bash
# Builds the HTML reference of the installed headers into build/docs/html
# with doxygen. Fails, listing the warnings, when a public class or member
# is undocumented or a reference comment is malformed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
command -v doxygen >/dev/null || { echo "doxygen is not installed (tools/deps.sh installs it)" >&2; exit 1; }
# The installed headers are the list PEVRANO_PUBLIC_HEADERS of CMakeLists.txt,
# less the top pevrano.h: it only includes the others, and doxygen mistakes a
# \file in core/pevrano.h for it.
PEVRANO_HEADERS=$(sed -n '/^set(PEVRANO_PUBLIC_HEADERS/,/^)/{/^set(\|^)/d;/^ *pevrano\.h$/d;p}' CMakeLists.txt | xargs)
export PEVRANO_HEADERS
export PEVRANO_DOCS_OUT="$root/build/docs"
mkdir -p "$PEVRANO_DOCS_OUT"
log="$PEVRANO_DOCS_OUT/warnings.txt"
if doxygen docs/Doxyfile 2>"$log"; then
  echo "reference: $PEVRANO_DOCS_OUT/html/index.html"
else
  cat "$log" >&2
  echo "$(grep -cE ': (warning|error): ' "$log" || true) documentation warnings (see $log)" >&2
  exit 1
fi
