#!/usr/bin/env bash
# Installs what building, testing, benchmarking and cross-building need on
# Debian 12. Installs nothing when everything is already there.
set -euo pipefail
packages=(build-essential cmake ninja-build pkg-config python3
          libfreetype-dev libpng-dev libjpeg62-turbo-dev libgif-dev zlib1g-dev
          libgtest-dev libbenchmark-dev libpixman-1-dev
          g++-arm-linux-gnueabi qemu-user clang clang-format-14 libclang-rt-14-dev valgrind
          fonts-dejavu-core fonts-wqy-microhei)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo
echo "installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
