#!/usr/bin/env bash
# Checks the layout of the sources, then builds and runs every test four
# ways: Release with warnings as errors, AddressSanitizer +
# UndefinedBehaviorSanitizer, the device's ABI (32-bit ARM, soft float)
# under qemu-user, and Release with the scalar references only (FBC_SIMD
# off); then runs every fuzz target briefly on a clang sanitizer build.
# Stops at the first failure.
#
#   bash cmake/test-all.sh [release] [asan] [armel] [scalar] [fuzz]
set -euo pipefail
cd "$(dirname "$0")/.."
bash cmake/setup-debian.sh
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release asan armel scalar fuzz)
echo "=== format"
bash cmake/check-format.sh
for preset in "${presets[@]}"; do
  start=$SECONDS
  echo "=== $preset: configure, build, test"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  if [ "$preset" = fuzz ]; then
    # Long enough to catch a regression at once; fuzz/run.sh runs longer campaigns.
    bash fuzz/run.sh 20
  else
    ctest --preset "$preset"
  fi
  echo "=== $preset: passed in $((SECONDS - start)) s"
done
