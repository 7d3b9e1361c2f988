#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# consumer_test.sh BUILD: installs the engine of a build folder, moves it, and builds a project against it with CMake's
# find_package and with pkg-config, each with the shared and with the static library.
set -euo pipefail
build=$1
consumer=$(dirname "$(realpath "$0")")/consumer
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for component in library development; do
  cmake --install "$build" --component $component --prefix "$scratch/first" >/dev/null
done
mv "$scratch/first" "$scratch/moved"
prefix=$scratch/moved
libraries=$(dirname "$(find "$prefix" -name libhdr_engine.so)")
export LD_LIBRARY_PATH=$libraries PKG_CONFIG_PATH=$libraries/pkgconfig

cmake -S "$consumer" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/cmake" >/dev/null
"$scratch/cmake/with_hdr_engine"
"$scratch/cmake/with_hdr_engine_static"

# shellcheck disable=SC2046 # one word a flag
cc $(pkg-config --cflags hdr_engine) "$consumer/main.c" $(pkg-config --libs hdr_engine) -o "$scratch/shared"
"$scratch/shared"
# shellcheck disable=SC2046
cc $(pkg-config --cflags hdr_engine) "$consumer/main.c" \
  -Wl,-Bstatic $(pkg-config --libs hdr_engine) -Wl,-Bdynamic $(pkg-config --static --libs-only-l hdr_engine | sed 's/-lhdr_engine//') \
  -o "$scratch/static"
env -u LD_LIBRARY_PATH "$scratch/static"
