#!/bin/sh
# A whole run with all indicators reads nothing undefined, writes nowhere it should not and loses no
# memory.
set -eu
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
"$build/makeClip" clip.yuv 256 256 > /dev/null
head -c $((256 * 256 * 3 / 2 * 10 + 1000)) clip.yuv > short.yuv
valgrind -q --error-exitcode=9 --leak-check=full --show-leak-kinds=definite \
  "$build/lumaprobe" short.yuv 256 256 0xffff 12 0 > console.txt
valgrind -q --error-exitcode=9 --leak-check=full "$build/lumaprobe" short.yuv 33 17 0xffff 12 0 \
  >> console.txt
test "$(grep -c '^000' console.txt)" = 24
