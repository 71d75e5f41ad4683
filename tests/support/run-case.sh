#!/usr/bin/env bash
# Runs a test executable in a scratch working directory of its own, so that
# the log the engine opens when it loads ("pevrano_log.txt" in the working
# directory) belongs to that run alone.
# When the executable lists its tests, the lines the engine's log echoes on
# standard output while the library loads and unloads (they begin with three
# blanks) are dropped, so that they are not taken for test names; GoogleTest
# indents its test names by exactly two blanks.
scratch=$(mktemp -d "${TMPDIR:-/tmp}/pevrano-case-XXXXXX") || exit 1
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
for argument in "$@"; do
  if [ "$argument" = "--gtest_list_tests" ]; then
    set -o pipefail
    "$@" | grep -v '^   '
    exit $?
  fi
done
"$@"
