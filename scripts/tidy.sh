#!/usr/bin/env bash
# clang-tidy over the sources of the library, the formats and the tool.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset tidy >/dev/null
git ls-files 'halvex/*.cpp' 'formats/*.cpp' 'tools/*.cpp' | xargs -P "$(nproc)" -n 2 clang-tidy -p build/tidy --quiet 2>/dev/null
