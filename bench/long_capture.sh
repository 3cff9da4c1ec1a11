#!/usr/bin/env bash
# Writes a long capture for timing the import: what the library logs at level 4 while bench/long_session.py's two sensors
# run for MINUTES, as logcat -v threadtime prints it. Some 220 MB a minute.
#
#   bench/long_capture.sh MINUTES build/release/tools/cli/lsc_replay > build/long.txt
#   command time -v build/release/tools/cli/lsc_replay import build/long.txt > /dev/null
set -euo pipefail
minutes=$1
replay=$2
here=$(dirname "$0")
session=$(mktemp)
trap 'rm -f "$session"' EXIT
{
    echo '{"platform":"property","key":"vendor.tarvo.3a.lscutil.log","value":4}'
    echo '{"platform":"log","mode":1,"details_level":5,"details_mask":"0x821000"}'
    python3 "$here/long_session.py" --minutes "$minutes"
} > "$session"
"$replay" --log "$session" 2>&1 > /dev/null | awk '{
    time = int(NR / 30)  # ms, at 30000 lines a second
    second = int(time / 1000)
    tid = /\[(pushValue|updateSensorData)\]/ ? 1240 : 1250
    text = substr($0, index($0, "): ") + 3)
    printf "11-22 %02d:%02d:%02d.%03d  1234  %d %s TarvoShadingCustomUtil: %s\n", 10 + int(second / 3600), second / 60 % 60,
           second % 60, time % 1000, tid, substr($0, 1, 1), text
}'
