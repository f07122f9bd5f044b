#!/usr/bin/env bash
# Tries the archive for Linux as its user would: try-linux.sh ARCHIVE
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$(dirname "$1")/try/linux
rm -rf "$folder"
mkdir -p "$folder"
tar -xf "$1" -C "$folder"
prefix=$(cd "$folder"/* && pwd)
"$here/consume.sh" cmake "$prefix" Release
"$here/consume.sh" pkg-config "$prefix" KilnBase
for program in drawview morlaWarning tracelog vxcached; do
  "$prefix/bin/$program" --version
done
ls "$prefix"/share/licenses/KilnBase/{LICENSE,copyright.txt} "$prefix/README.md"
