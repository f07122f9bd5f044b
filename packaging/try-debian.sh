#!/usr/bin/env bash
# Tries packages of Debian as their users would: try-debian.sh PACKAGE...
# They are installed in a folder that holds what they depend on and a compiler, and nothing else: files
# of this machine's packages. All that follows runs with that folder as its root.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
packages=("$@")
root=$(dirname "$1")/try/debian
tools=(bash cmake coreutils dash dpkg g++ grep libc-bin ninja-build pkg-config sed)

asAdministrator() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# The names of all that the packages and the tools need, as far as this machine has them.
dependencies() {
  local package
  for package in "${packages[@]}"; do
    dpkg-deb --field "$package" Depends | tr ',' '\n' | sed 's/^ *//;s/[ |(].*//;/kilnbase/d'
  done | xargs apt-cache depends --recurse --installed --no-recommends --no-suggests --no-conflicts \
    --no-breaks --no-replaces --no-enhances "${tools[@]}" | sed -n '/^[a-z0-9]/p' | sort -u |
    xargs dpkg-query -l 2>/dev/null | sed -n 's/^i[itW]  \([^ ]*\).*/\1/p'
}

makeRoot() {
  local names=() folder
  mapfile -t names < <(dependencies)
  asAdministrator rm -rf "$root"
  mkdir -p "$root"/usr/{bin,lib,lib64,sbin} "$root"/{dev,proc,tmp,var/lib/dpkg/{info,updates}}
  for folder in bin lib lib64 sbin; do
    ln -s usr/$folder "$root/$folder"
  done
  {
    dpkg-query -L "${names[@]}" | sort -u
    for name in "${names[@]}"; do
      ls "/var/lib/dpkg/info/$name".* 2>/dev/null || true
    done
    find /var/lib/dpkg/triggers -type f
  } | sed '/^[^/]/d;/^$/d;s|^/||;/^\.$/d' |
    asAdministrator tar -C / --no-recursion --ignore-failed-read -T - -cf - 2>/dev/null |
    asAdministrator tar -C "$root" --keep-directory-symlink -xf -
  dpkg-query -s "${names[@]}" | asAdministrator tee "$root/var/lib/dpkg/status" >/dev/null
  asAdministrator mknod -m 666 "$root/dev/null" c 1 3
}

# Runs a command with the folder as its root, and with /proc where this machine permits a mount that
# ends with the command. A library needs /proc to find its programs: without, that test is left out.
inRoot() {
  local environment=(/usr/bin/env -i PATH=/usr/bin:/usr/sbin HOME=/tmp)
  if asAdministrator unshare --mount mount -t proc proc "$root/proc" 2>/dev/null; then
    # shellcheck disable=SC2016  # the other shell expands
    asAdministrator unshare --mount sh -c 'mount -t proc proc "$0/proc" && exec chroot "$0" "$@"' \
      "$root" "${environment[@]}" "$@"
  else
    printf 'No mount of /proc is permitted here: programs are not looked for.\n'
    asAdministrator chroot "$root" "${environment[@]}" KILN_NO_PROC=1 "$@"
  fi
}

lintian --fail-on error --allow-root "${packages[@]}"
makeRoot
asAdministrator dpkg --root="$root" --install "${packages[@]}"
asAdministrator mkdir -p "$root/try/packaging" "$root/try/tests"
asAdministrator cp "$here/consume.sh" "$root/try/packaging"
asAdministrator cp -r "$here/../tests/consumer" "$root/try/tests"
inRoot /try/packaging/consume.sh cmake /usr Release
inRoot /try/packaging/consume.sh pkg-config /usr KilnBase
for program in drawview morlaWarning tracelog vxcached; do
  inRoot $program --version
done
asAdministrator rm -rf "$root"
