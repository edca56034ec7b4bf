#!/usr/bin/env bash
# Installs the given build tree, then builds and runs a project that finds it as a package.
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
private=$(find "$work/prefix" -name '*_local.h' -o -name '*_private.h')
[[ -z $private ]] || { echo "private headers installed: $private"; exit 1; }
flags=$(sed -n 's/^CMAKE_CXX_FLAGS:[A-Z]*=//p' "$build/CMakeCache.txt")
cmake -S "$source/tests/consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer" | grep -E '^[1-9][0-9]* bits by 2\.5\.6\.1'
