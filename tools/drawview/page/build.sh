#!/usr/bin/env bash
# Builds the page of drawview into one self-contained file: build.sh OUTPUT.html
# The packages named in package-lock.json are installed beside the output, into OUTPUT.html.packages/.
# Nothing happens when nothing has changed.
set -euo pipefail

[ $# -eq 1 ] || {
  printf 'usage: build.sh OUTPUT.html\n' >&2
  exit 2
}
source=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
mkdir -p "$(dirname "$1")"
output=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
packages=$output.packages
mkdir -p "$packages"

# Whether the files have changed since their sums were written: changed SUMS FILE...
changed() {
  [ ! -e "$1" ] || ! sha256sum "${@:2}" | cmp --silent - "$1"
}

lock=("$source/package.json" "$source/package-lock.json" "$source/.npmrc")
if changed "$packages/lock.sums" "${lock[@]}"; then
  rm -f "$packages/lock.sums" "$packages/page.sums"
  cp "${lock[@]}" "$packages"
  (cd "$packages" && npm ci --no-audit --no-fund --loglevel=error)
  sha256sum "${lock[@]}" >"$packages/lock.sums"
fi
mapfile -t files < <(find "$source/src" "$source/build.mjs" -type f | sort)
if [ ! -e "$output" ] || changed "$packages/page.sums" "${files[@]}"; then
  node "$source/build.mjs" "$source/src" "$packages" "$output"
  sha256sum "${files[@]}" >"$packages/page.sums"
fi
