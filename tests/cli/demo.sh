#!/bin/sh
# The demo finds every defect of its clip, and analyses a video file as what it decodes to.
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR="$work/tmp"
mkdir "$TMPDIR"

"$source/scripts/demo.sh" > "$work/made.txt"
test "$(grep -c 'frame [0-9]*$' "$work/made.txt")" = 13
if grep 'NOT FOUND' "$work/made.txt"; then exit 1; fi

"$2/makeClip" "$work/clip.yuv" > /dev/null
ffmpeg -v error -f rawvideo -s 352x288 -r 25 -i "$work/clip.yuv" -c:v ffv1 "$work/a clip.mkv"
"$source/scripts/demo.sh" "$work/a clip.mkv" > "$work/file.txt"
grep -q 'a clip.mkv: 352 x 288, 25 frames per second' "$work/file.txt"
grep -q '^233 frames' "$work/file.txt"
cmp "$source/build/demo/metricsResultsCSV.csv" "$source/tests/golden/clip.report.tsv"

# The decoded video is gone.
test -z "$(ls "$TMPDIR")"
