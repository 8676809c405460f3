#!/usr/bin/env bash
# Installs the library from the dev build into a fresh folder and builds and runs the consumer example against it,
# through the CMake package and through pkg-config.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD/build/package
prefix=$root/install
rm -rf "$root"
cmake --install build/dev --prefix "$prefix" >/dev/null

# The umbrella header brings every other one; those of the build alone come with them.
umbrella=$prefix/include/halvex/HalvexRTKBasics.h
missing=$(cd "$prefix/include" && find halvex -name '*.h' ! -name HalvexRTKBasics.h ! -name Export.h | sort |
    while read -r header; do grep -qF "#include \"$header\"" "$umbrella" || echo "$header"; done)
[ -z "$missing" ] || { printf 'missing in the umbrella header:\n%s\n' "$missing" >&2; exit 1; }

cmake -S examples/consumer -B "$root/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror" >/dev/null
cmake --build "$root/consumer"
"$root/consumer/consumer" | tee "$root/output"
"$root/consumer/epoch"
"$root/consumer/every_name"

library=$(find "$prefix" -name libHalvexRTKBasics.so)
PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --define-variable=prefix="$prefix" --cflags --libs HalvexRTKBasics)"
c++ examples/consumer/main.cpp -o "$root/consumer-pc" "${flags[@]}"
LD_LIBRARY_PATH=$(dirname "$library") "$root/consumer-pc" | diff - "$root/output"
"$prefix/bin/halvex" --version
