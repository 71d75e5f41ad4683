#!/usr/bin/env bash
# Runs the demo in the X display, waits for its window, sends it input and
# checks that the demo ends by itself, cleanly: Escape, or a click on the
# interface's Quit button. Skipped (77) without a display.
#   check_live_demo.sh <xinput> <demo> key Escape | click <x> <y>
set -uo pipefail
[ -n "${DISPLAY:-}" ] || exit 77
xinput=$1
demo=$2
shift 2
"$demo" >output.txt 2>&1 &
demo_pid=$!
# Input is sent once the interface runs live, then again every second until
# the demo ends (an event sent before SDL listens would be lost).
for _ in $(seq 300); do
  grep -q '^Interface live' output.txt && break
  sleep 0.1
done
for _ in $(seq 20); do
  "$xinput" "$@" || true
  sleep 1
  kill -0 "$demo_pid" 2>/dev/null || break
done
if kill -0 "$demo_pid" 2>/dev/null; then
  kill "$demo_pid"
  echo "the demo did not end on: $*"
  cat output.txt
  exit 1
fi
wait "$demo_pid"
status=$?
cat output.txt
[ "$status" -eq 0 ] && grep -Eq '^[0-9]+ frames at [0-9.]+ frames per second$' output.txt &&
  grep -q 'X11 window' output.txt
