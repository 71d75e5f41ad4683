#!/usr/bin/env bash
# Runs a gallery example off-screen at 320x240 and checks its screenshot with
# gallerycheck; "differs" runs it again five frames further and compares the
# two. The engine's log must end balanced: "Final memory ratio: 0 (N/N)".
#   check_gallery.sh <gallerycheck> <example> <frames> <property> <rectangles...>
set -uo pipefail
checker=$1 program=$2 frames=$3 property=$4
shift 4
source "$(dirname "$0")/common.sh"
shoot() {
  env -u DISPLAY "$program" --frames "$1" --size 320x240 --screenshot "$2" >output.txt 2>&1 ||
    { cat output.txt; echo "the example failed"; exit 1; }
  memory_balanced || exit 1
}
shoot "$frames" shot.png
if [ "$property" = differs ]; then
  shoot $((frames + 5)) later.png
  exec "$checker" differs shot.png later.png "$@"
fi
exec "$checker" "$property" shot.png "$@"
