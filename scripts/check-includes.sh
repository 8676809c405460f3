#!/usr/bin/env bash
# Holds the directions in which the parts may look at each other:
#   tools -> formats -> halvex -> platform;  inside the library corrections -> observations -> time <- orbits, files,
#   status, sync;  inside the platform os <- kernix <- mjd <- caln, bss, mdb, pio, z9.
set -euo pipefail
cd "$(dirname "$0")/.."

# may FOLDER TARGET...: every quoted include of a file in FOLDER begins with FOLDER itself or one of TARGETs.
bad=0
may() {
    local folder=$1 allowed
    shift
    [ -d "$folder" ] || return 0
    allowed=$(for each in "$folder" "$@"; do case $each in *.h) printf "|%s\"" "$each" ;; *) printf "|%s/" "$each" ;; esac; done)
    local hits
    hits=$(grep -rnE '^\s*#\s*include\s*"' "$folder" --include='*.h' --include='*.cpp' \
        | grep -vE "\"(${allowed:1})" || true)
    if [ -n "$hits" ]; then
        printf '%s may not include:\n%s\n' "$folder" "$hits" >&2
        bad=1
    fi
}

p=halvex/platform
may $p/os $p/Export.h
may $p/kernix $p/Export.h $p/os
may $p/mjd $p/Export.h $p/os $p/kernix
for part in caln bss mdb pio z9; do may $p/$part $p/Export.h $p/os $p/kernix $p/mjd $p/caln $p/bss $p/mdb $p/pio $p/z9; done
may halvex/time $p
may halvex/observations $p halvex/time
may halvex/orbits $p halvex/time
may halvex/corrections $p halvex/time halvex/observations
may halvex/files $p halvex/time
may halvex/status $p halvex/time halvex/observations
may halvex/sync $p
may formats halvex
may tools formats halvex
exit $bad
