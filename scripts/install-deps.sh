#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the Windows cross
# build need. Idempotent: prints nothing and touches nothing when every
# package is already installed.
set -euo pipefail

packages=(
  build-essential cmake ninja-build ccache pkg-config python3
  clang libclang-rt-14-dev
  libboost-dev libboost-context-dev libboost-program-options-dev libinih-dev
  zlib1g-dev libxxhash-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev libprotobuf-dev protobuf-compiler
  g++-mingw-w64-x86-64 g++-mingw-w64-i686 libz-mingw-w64-dev
  wine wine64
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "installing: ${missing[*]}"
sudo=""
[[ $(id -u) -eq 0 ]] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
