#!/usr/bin/env bash
# Runs every fuzzer for some seconds on its seed corpus. usage: scripts/fuzz.sh [SECONDS [NAME...]]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}
[ $# -eq 0 ] || shift
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
for target in build/fuzz/fuzz/*_fuzz; do
    name=$(basename "$target")
    [ $# -eq 0 ] || [[ " $* " == *" $name "* ]] || continue
    corpus=build/fuzz/corpus/$name
    mkdir -p "$corpus"
    echo "$name for $seconds s"
    "$target" -max_total_time="$seconds" -rss_limit_mb=2048 -max_len=65536 -verbosity=0 -print_final_stats=0 \
        -artifact_prefix="build/fuzz/$name-" "$corpus"
done
