#!/usr/bin/env bash
# The soak's memory judge on recorded runs: its verdict line and exit status.
# warm-up.txt is the run that rose from 99,652 to 101,148 kB by frame 4,000
# and stayed flat (the samples between are interpolated): warm-up, not a leak.
# late-step.txt steps up once by 200 kB; slow-leak.txt climbs 80 kB every
# 1,000 frames; short.txt is a 2,000-frame run still warming up at 1,750.
#   check_soak_growth.sh <tools/soak-growth.sh> <folder of recorded runs>
set -uo pipefail
judge=$1
data=$2
failures=0
while IFS='|' read -r file status verdict; do
  printed=$(bash "$judge" "$data/$file")
  got=$?
  if [ "$got" != "$status" ] || [ "$printed" != "$verdict" ]; then
    echo "$file: status $got, '$printed'; expected status $status, '$verdict'"
    failures=$((failures + 1))
  fi
done <<'CASES'
warm-up.txt|0|soak growth: resident memory +0.0 kB per 1,000 frames over frames 5000-10000 (tolerance 64)
noisy-flat.txt|0|soak growth: resident memory -0.1 kB per 1,000 frames over frames 5000-10000 (tolerance 64)
late-step.txt|0|soak growth: resident memory +51.4 kB per 1,000 frames over frames 5000-10000 (tolerance 64)
slow-leak.txt|1|soak growth: resident memory +80.0 kB per 1,000 frames over frames 5000-10000 (tolerance 64)
short.txt|0|soak growth: not judged, 5 sample(s) over frames 1000-2000 (3 over 2500 frames needed)
empty.txt|1|soak growth: no samples
CASES
exit $((failures > 0))
