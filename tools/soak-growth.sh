#!/usr/bin/env bash
# Judges the resident memory the soak program printed (its lines
# "frame N: resident K kB, ..."), read from the file given or stdin:
#   bash tools/soak-growth.sh [soak-output.txt]
# Memory rises while the process warms up (allocator pools, driver caches,
# the first textures and glyphs), so the first samples are not the baseline.
# The judge fits a straight line through the samples of the second half of
# the run (frames from half the last sampled frame on) and fails when it
# climbs by more than the tolerance: a leak keeps climbing, warm-up levels off.
# A second half shorter than 2,500 frames or with fewer than three samples
# is not judged: over a short stretch a late warm-up step reads as a slope.
set -euo pipefail
# Allowed slope, in kB per 1,000 frames: 16 pages. A leak of 64 bytes a frame
# or more fails; a flat run's page-sized noise and a single late step of up
# to about 200 kB (an allocator taking one more arena) pass.
toleranceKilobytes=64
shortestSpan=2500
awk -v tolerance="$toleranceKilobytes" -v span="$shortestSpan" '
  match($0, /^frame +[0-9]+: resident +[0-9]+ kB/) {
    split(substr($0, RSTART, RLENGTH), field, /[: ]+/)
    n++; frame[n] = field[2]; resident[n] = field[4]
  }
  END {
    if (n == 0) { print "soak growth: no samples"; exit 1 }
    half = frame[n] / 2
    for (i = 1; i <= n; i++)
      if (frame[i] >= half) { m++; sx += frame[i]; sy += resident[i]; first = first ? first : frame[i] }
    if (m < 3 || frame[n] - first < span) {
      printf "soak growth: not judged, %d sample(s) over frames %d-%d (3 over %d frames needed)\n", m, first, frame[n], span
      exit 0
    }
    mx = sx / m; my = sy / m
    for (i = 1; i <= n; i++)
      if (frame[i] >= half) { sxy += (frame[i] - mx) * (resident[i] - my); sxx += (frame[i] - mx) ^ 2 }
    slope = 1000 * sxy / sxx
    printf "soak growth: resident memory %+.1f kB per 1,000 frames over frames %d-%d (tolerance %d)\n", slope, first, frame[n], tolerance
    exit slope > tolerance ? 1 : 0
  }' "${1:-/dev/stdin}"
