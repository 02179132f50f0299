#!/bin/sh
# The demo finds every defect of its clip, and analyses video files as what they decode to.
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
results=$source/build/demo/lumascan-results
page="Open $results/index.html in a browser."

"$source/scripts/demo.sh" > "$work/made.txt"
test "$(grep -c 'frame [0-9]*$' "$work/made.txt")" = 13
if grep 'NOT FOUND' "$work/made.txt"; then exit 1; fi
test "$(tail -n 1 "$work/made.txt")" = "$page"
cmp "$results/clip.yuv.lumascan/rows.tsv" "$source/tests/golden/clip.report.tsv"

"$2/makeClip" "$work/clip.yuv" > /dev/null
ffmpeg -v error -f rawvideo -s 352x288 -r 25 -i "$work/clip.yuv" -c:v ffv1 "$work/a clip.mkv"
cd "$work"
"$source/scripts/demo.sh" 'a clip.mkv' > file.txt
grep -q '^fail *a clip.mkv: ' file.txt
test "$(tail -n 1 file.txt)" = "$page"
cmp "$results/a clip.mkv.lumascan/rows.tsv" "$source/tests/golden/clip.report.tsv"

# The status is lumascan's.
status=0
"$source/scripts/demo.sh" missing.mkv 2> error.txt > /dev/null || status=$?
test $status = 3
grep -q 'cannot open "missing.mkv"' error.txt
