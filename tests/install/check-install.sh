#!/usr/bin/env bash
# Installs the build tree into a scratch prefix, then builds and runs a small
# consumer program against it twice: with find_package(ZantorBase) and with
# pkg-config. A broken install rule, package config or .pc file fails here.
set -euo pipefail
build_dir=$1
work=$2
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work"
mkdir -p "$work"
prefix="$work/prefix"
cmake --install "$build_dir" --prefix "$prefix" >/dev/null

# find_package
cmake -S "$here/consumer" -B "$work/cmake-build" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/cmake-build" | tail -n 20
LD_LIBRARY_PATH="$prefix/lib" "$work/cmake-build/consumer" | tee "$work/cmake.out"

# pkg-config
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
# shellcheck disable=SC2046
c++ -std=c++20 "$here/consumer/main.cpp" -o "$work/pkgconfig-consumer" \
  $(pkg-config --cflags --libs ZantorBase)
LD_LIBRARY_PATH="$prefix/lib" "$work/pkgconfig-consumer" | tee "$work/pkgconfig.out"

expected="01 02 03 04 | 16909060 success | main.cpp:Consumer::Fail:16 - invalid parameter"
for out in "$work/cmake.out" "$work/pkgconfig.out"; do
  if [[ "$(cat "$out")" != "$expected" ]]; then
    echo "consumer printed '$(cat "$out")', expected '$expected'" >&2
    exit 1
  fi
done
echo "installed package: find_package and pkg-config consumers OK"
