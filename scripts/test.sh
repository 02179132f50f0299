#!/usr/bin/env bash
# Builds and passes all tests, from nothing: under clang's address and undefined behaviour sanitizers,
# of the kernels under GCC's too, under the thread sanitizer, and those of the program as it is installed.
#
# All builds are made first, then their tests run as one. The last lines are the ten slowest tests and
# ctest's own closing lines.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh test

presets=(asan release tsan asan-gcc)
# Two at a time, so that the end of one does not leave processors idle.
printf '%s\n' "${presets[@]}" | xargs -P 2 -I PRESET sh -euc '
  cmake --preset PRESET -DLUMAPROBE_WERROR=ON > /dev/null
  cmake --build --preset PRESET --parallel $((($(nproc) + 2) / 2))'

echo "== tests"
printf 'subdirs("%s")\n' "${presets[@]}" > build/CTestTestfile.cmake
# One more at a time than there are processors, since many wait: for a browser, for a process to be killed.
log=build/tests.log
closing='tests passed, '
status=0
ctest --test-dir build --no-tests=error -j "$(($(nproc) + 1))" --output-on-failure --progress \
  --output-junit "$PWD/build/tests.xml" 2>&1 | tee "$log" | sed -u "/$closing/,\$d" || status=$?

echo 'The ten slowest tests, in seconds:'
sed -nE 's/.*<testcase name="([^"]*)".* time="([0-9.]+)".*/\2 \1/p' build/tests.xml | sort -rn |
  awk 'NR <= 10'
echo
sed -n "/$closing/,\$p" "$log"
exit "$status"
