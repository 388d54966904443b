#!/usr/bin/env bash
# Unpacks Debian's armel builds of the dependencies into a sysroot folder.
# The packages are only downloaded and unpacked, never installed, so version
# skew between the host's and armel's packages cannot break the host.
set -euo pipefail
sysroot=${1:?usage: armel-sysroot.sh SYSROOT}
# An existing folder is never touched: it may be a sysroot of the caller's.
[ ! -e "$sysroot" ] || { echo "$sysroot exists already; not touching it" >&2; exit 1; }
packages=(libfreetype6 libfreetype-dev libpng16-16 libpng-dev libjpeg62-turbo
          libjpeg62-turbo-dev libgif7 libgif-dev zlib1g zlib1g-dev libbrotli1
          libbrotli-dev libbz2-1.0 libgtest-dev libpixman-1-0 libpixman-1-dev)
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo

if ! dpkg --print-foreign-architectures | grep -qx armel; then
  $sudo dpkg --add-architecture armel
  $sudo apt-get update -qq
fi
debs=$(mktemp -d)
trap 'rm -rf "$debs"' EXIT
names=()
for p in "${packages[@]}"; do names+=("$p:armel"); done
if ! (cd "$debs" && apt-get download -q "${names[@]}" >/dev/null); then
  $sudo apt-get update -qq
  (cd "$debs" && apt-get download -q "${names[@]}" >/dev/null)
fi
# Unpack beside the target and move it into place, so the folder exists
# only when complete.
mkdir -p "$(dirname "$sysroot")"
staging=$(mktemp -d "$sysroot.partial.XXXXXX")
for deb in "$debs"/*.deb; do dpkg -x "$deb" "$staging"; done
mv "$staging" "$sysroot"
echo "armel sysroot ready in $sysroot"
