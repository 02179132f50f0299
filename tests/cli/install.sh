#!/bin/sh
# cmake --install puts a program in place that runs.
set -eu
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/usr" > /dev/null
cd "$work"
status=0
usr/bin/lumaprobe > usage.txt || status=$?
test $status = 255
grep -q '^Usage: usr/bin/lumaprobe video.yuv WIDTH HEIGHT' usage.txt
