#!/usr/bin/env bash
# Builds and passes all tests, from nothing: under the address and undefined behaviour sanitizers,
# under the thread sanitizer, and last those of the program as it is installed.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh test

for preset in asan tsan release; do
  echo "== $preset"
  cmake --preset "$preset" -DLUMAPROBE_WERROR=ON > /dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" --no-tests=error -j "$(nproc)" --progress
done
