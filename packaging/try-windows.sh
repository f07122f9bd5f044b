#!/usr/bin/env bash
# Tries the archive for Windows as its users would, under a path with a blank and with a Wine that has
# been started: try-windows.sh ARCHIVE
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder="$(dirname "$1")/try/with a blank"
rm -rf "$folder"
mkdir -p "$folder"
unzip -q "$1" -d "$folder"
prefix=$(cd "$folder"/* && pwd)
package=-DKilnBase_DIR=$prefix/lib/cmake/KilnBase
export WINEPATH="Z:${prefix//\//\\}\\bin"

# Runs a program for Windows. (Wine gets no pipes: what the program starts would hold them.)
run() {
  local status=0
  wine "$@" >"$prefix.output" 2>&1 </dev/null || status=$?
  cat "$prefix.output"
  return $status
}

# A program of the C functions: useFromC KIND TOOLCHAIN
useFromC() {
  local tree=$prefix.c-$1
  cmake -G Ninja -S "$here/windows/c" -B "$tree" --toolchain "$2" "$package" \
    -DPLAIN_SOURCE="$here/../tests/c/plain_functions.c" -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build "$tree"
  run "$tree/plain.exe"
}

"$here/consume.sh" cmake "$prefix" Release "$package" -DCMAKE_EXE_LINKER_FLAGS=-static \
  --toolchain "$here/../cmake/mingw-w64.cmake"
useFromC mingw "$here/../cmake/mingw-w64.cmake"
useFromC msvc "$here/windows/clang-msvc.cmake"
for program in drawview morlaWarning tracelog vxcached; do
  run "$prefix/bin/$program.exe" --version
done
ls "$prefix"/share/licenses/KilnBase/{LICENSE,copyright.txt,GPL-3.txt,*mingw-w64*} "$prefix/README.md"
