#!/usr/bin/env bash
# Builds the consumer of the tests with an installed package, and runs it:
#   consume.sh cmake PREFIX CONFIGURATION [ARGUMENT_OF_CMAKE...]
#   consume.sh pkg-config PREFIX PACKAGE [--static]
# The trees of the builds are beside PREFIX. CC and CXX may name other compilers.
set -euo pipefail

consumer=$(cd "$(dirname "${BASH_SOURCE[0]}")/../tests/consumer" && pwd)
prefix=$2

byCMake() {
  local tree=$prefix.cmake-$1
  cmake -G Ninja -S "$consumer" -B "$tree" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE="$1" "${@:2}" >/dev/null
  cmake --build "$tree"
  ctest --test-dir "$tree" --output-on-failure ${KILN_NO_PROC:+--exclude-regex installed_programs}
}

byPkgConfig() {
  local tree=$prefix.pkg-config-$1${CXX:+-$CXX} compile link
  export PKG_CONFIG_PATH=$prefix/lib/pkgconfig LD_LIBRARY_PATH=$prefix/lib
  read -ra compile <<<"$(pkg-config --cflags "$1")"
  compile+=(-DPACKAGE_VERSION="\"$(pkg-config --modversion "$1")\"")
  read -ra link <<<"$(pkg-config --libs "$@")"
  mkdir "$tree"
  "${CC:-gcc}" -std=c11 -c "$consumer/report.c" -o "$tree/report.o" "${compile[@]}"
  "${CXX:-g++}" -std=c++20 -c "$consumer/main.cpp" -o "$tree/main.o" "${compile[@]}"
  "${CXX:-g++}" "$tree/main.o" "$tree/report.o" -o "$tree/consumer" "${link[@]}"
  "${CC:-gcc}" -std=c11 "${compile[@]}" "$consumer/version.c" -o "$tree/version" "${link[@]}"
  "$tree/consumer"
  "$tree/version"
}

case "$1" in
  cmake) byCMake "${@:3}" ;;
  pkg-config) byPkgConfig "${@:3}" ;;
esac
