#!/usr/bin/env bash
# Runs an example program off-screen in the working directory and checks that
# it succeeded, that what it printed matches the lines expected of it (a
# file of extended regular expressions, one per printed line), and that the
# engine's log balanced every counted allocation: "Final memory ratio: 0 (N/N)".
#   check_example.sh <expected-lines-file> <program> [arguments...]
set -uo pipefail
expected=$1
shift
source "$(dirname "$0")/common.sh"
env -u DISPLAY "$@" >output.txt 2>errors.txt
status=$?
if [ "$status" -ne 0 ]; then
  echo "exit status $status"
  cat output.txt errors.txt
  exit 1
fi
# The log's header lines, echoed before the program turns the echo off, are
# not the program's own.
grep -v -e '^   ' -e '^\[Kolvane' -e '^---' -e '^$' output.txt >printed.txt
if [ "$(wc -l <printed.txt)" -ne "$(wc -l <"$expected")" ]; then
  echo "printed lines:"
  cat printed.txt
  exit 1
fi
line=0
while IFS= read -r pattern; do
  line=$((line + 1))
  printed=$(sed -n "${line}p" printed.txt)
  if ! [[ $printed =~ ^$pattern$ ]]; then
    echo "line $line: '$printed' does not match '$pattern'"
    exit 1
  fi
done <"$expected"
memory_balanced
