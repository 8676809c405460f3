#!/usr/bin/env bash
# Runs every fuzzer for some seconds, from its seeds and what earlier runs have found. An input that fails stays in
# build/fuzz; once the fault is mended it moves to the seeds, which the tests replay.
# usage: scripts/fuzz.sh [SECONDS [NAME...]]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}
[ $# -eq 0 ] || shift
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
for target in build/fuzz/fuzz/*_fuzz; do
    name=$(basename "$target" _fuzz)
    [ $# -eq 0 ] || [[ " $* " == *" $name "* ]] || continue
    corpus=build/fuzz/corpus/$name
    mkdir -p "$corpus"
    options=(-max_total_time="$seconds" -timeout=10 -max_len=65536 -print_final_stats=1)
    # No input justifies more than a few of its own sizes.
    options+=(-rss_limit_mb=2048 -malloc_limit_mb=16)
    [ ! -f "fuzz/$name.dict" ] || options+=(-dict="fuzz/$name.dict")
    log=build/fuzz/$name.log
    if ! "$target" "${options[@]}" -artifact_prefix="build/fuzz/$name-" "$corpus" "fuzz/seeds/$name" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        exit 1
    fi
    echo "$name: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") runs in $seconds s"
done
