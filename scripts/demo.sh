#!/usr/bin/env bash
# Builds the tool and runs the main job on a station's day that it makes itself: archive, look, replay, compare.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build
cmake --preset dev >/dev/null
cmake --build --preset dev --target halvex
build/dev/tools/halvex/halvex demo
