#!/usr/bin/env bash
# Installs the library into a fresh folder and builds and runs the consumer example against it, through the CMake package
# and through pkg-config.
set -euo pipefail
cd "$(dirname "$0")/.."
root=build/package
rm -rf "$root"
cmake --install build/dev --prefix "$PWD/$root/install" >/dev/null
cmake -S examples/consumer -B "$root/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$PWD/$root/install" >/dev/null
cmake --build "$root/consumer"
"$root/consumer/consumer"

export PKG_CONFIG_PATH=$(dirname "$(find "$PWD/$root/install" -name HalvexRTKBasics.pc)")
prefix=$PWD/$root/install
# shellcheck disable=SC2046
c++ examples/consumer/main.cpp -o "$root/consumer-pc" $(pkg-config --define-variable=prefix="$prefix" --cflags --libs HalvexRTKBasics)
LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name 'libHalvexRTKBasics.so')") "$root/consumer-pc" >/dev/null
"$prefix/bin/halvex" --version
