#!/usr/bin/env bash
# Runs a test executable. When it lists its tests, the lines the engine's log
# echoes on standard output while the library loads and unloads (they begin
# with three blanks) are dropped, so that they are not taken for test names;
# GoogleTest indents its test names by exactly two blanks.
for argument in "$@"; do
  if [ "$argument" = "--gtest_list_tests" ]; then
    set -o pipefail
    "$@" | grep -v '^   '
    exit $?
  fi
done
exec "$@"
