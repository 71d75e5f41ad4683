#!/usr/bin/env bash
# Runs a gallery example off-screen at 320x240 and checks its screenshot with
# gallerycheck; "differs" runs it again five frames further and compares the
# two. The engine's log must end balanced: "Final memory ratio: 0 (N/N)".
#   check_gallery.sh <gallerycheck> <example> <frames> <property> <rectangles...>
set -uo pipefail
checker=$1 program=$2 frames=$3 property=$4
shift 4
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
shoot() {
  env -u DISPLAY "$program" --frames "$1" --size 320x240 --screenshot "$2" >output.txt 2>&1 ||
    { cat output.txt; echo "the example failed"; exit 1; }
  summary=$(grep '^Final memory ratio' pevrano_log.txt | tail -n 1)
  [[ $summary =~ ^Final\ memory\ ratio:\ 0\ \(([0-9]+)/([0-9]+)\)$ ]] && [ "${BASH_REMATCH[1]}" = "${BASH_REMATCH[2]}" ] ||
    { echo "log summary: '$summary'"; exit 1; }
}
shoot "$frames" shot.png
if [ "$property" = differs ]; then
  shoot $((frames + 5)) later.png
  exec "$checker" differs shot.png later.png "$@"
fi
exec "$checker" "$property" shot.png "$@"
