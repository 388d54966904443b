#!/usr/bin/env bash
# Builds and runs every test three ways: Release with warnings as errors,
# AddressSanitizer + UndefinedBehaviorSanitizer, and the device's ABI
# (32-bit ARM, soft float) under qemu-user. Stops at the first failure.
set -euo pipefail
cd "$(dirname "$0")/.."
bash cmake/setup-debian.sh
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release asan armel)
for preset in "${presets[@]}"; do
  start=$SECONDS
  echo "=== $preset: configure, build, test"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
  echo "=== $preset: passed in $((SECONDS - start)) s"
done
