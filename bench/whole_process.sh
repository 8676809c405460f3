#!/usr/bin/env bash
# Whole processes: `halvex archive` beside Debian's `convbin` (package rtklib) on the same RINEX 3 file and, with
# HALVEX_DATA, on the same RTCM 3 streams, and the peak memory of `halvex archive` on that file and on one ten times as
# long.
# usage: bench/whole_process.sh [HALVEX [RINEX3_FILE]]   without a file: a simulated hour at 1 Hz
set -euo pipefail
halvex=$(realpath "${1:-build/release/tools/halvex/halvex}")
data=$(realpath "${HALVEX_DATA:-.}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
if [ $# -gt 1 ]; then zcat -f "$2" >one.rnx; else "$halvex" simulate --out one.rnx --hours 1 --interval 1 2>/dev/null; fi

seconds() {  # the best of five runs
    local best=999999999 start end i
    for i in 1 2 3 4 5; do
        rm -rf out; mkdir out
        start=$(date +%s%N); "$@" >/dev/null 2>&1; end=$(date +%s%N)
        [ $((end - start)) -lt "$best" ] && best=$((end - start))
    done
    awk -v n="$best" 'BEGIN { printf "%.3f", n / 1e9 }'
}
beside() {  # FILE, then what convbin is to do with it
    local file=$1 size ours peer
    shift
    size=$(stat -c %s "$file")
    ours=$(seconds "$halvex" archive "$file" --out out)
    awk -v s="$size" -v t="$ours" 'BEGIN { printf "halvex archive  %.3f s  %.0f MB/s\n", t, s / t / 1e6 }'
    if command -v convbin >/dev/null; then
        peer=$(seconds convbin "$@" -od -os -o out/peer.obs "$file")
        awk -v s="$size" -v t="$peer" 'BEGIN { printf "convbin         %.3f s  %.0f MB/s\n", t, s / t / 1e6 }'
        awk -v a="$ours" -v b="$peer" 'BEGIN { printf "throughput      %.1f times the peer\n", b / a }'
    else
        echo "convbin is not installed (package rtklib)"
    fi
}
beside one.rnx -r rinex -v 3.04
if [ -n "${HALVEX_DATA:-}" ]; then
    for stream in week-rollover-STR17.rtcm3 week-rollover-STR24.rtcm3; do  # MSM7, MSM4
        echo "RTCM 3 stream $stream:"
        beside "$(realpath "$data/rtcm/$stream")" -r rtcm3 -v 3.04 -tr 2018/07/14 23:50:18
    done
fi

memory() {  # peak resident set in KiB, as the kernel counts it
    python3 - "$@" <<'PY'
import resource, subprocess, sys
subprocess.run(sys.argv[1:], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
PY
}
"$halvex" simulate --out short.rnx --hours 1 --interval 1 2>/dev/null
"$halvex" simulate --out long.rnx --hours 10 --interval 1 2>/dev/null
echo "peak memory     $(memory "$halvex" archive short.rnx --out short) KiB for an hour at 1 Hz," \
     "$(memory "$halvex" archive long.rnx --out long) KiB for ten hours"
