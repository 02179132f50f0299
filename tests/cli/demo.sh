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

# An event for each of them, with its very first and last frame.
"$2/makeClip" "$work/clip.yuv" > "$work/defects.tsv"
while IFS='	' read -r defect first last indicator; do
  case $defect in
    black | freeze | letterbox | pillarbox | blur | combing | noise | flicker) type=$defect ;;
    coarseCoding) type=blockiness ;;
    lostBlocks) type=block_loss ;;
    overExposure) type=over_exposure ;;
    lowContrast) type=low_contrast ;;
    repeatedSlices) type=slice ;;
    *) continue ;;
  esac
  grep -q ",$type,[a-z]*,$first,$last," "$results/clip.yuv.lumascan/events.csv" || {
    echo "no event for $defect, $first to $last ($indicator)"
    exit 1
  }
done < "$work/defects.tsv"
(cd "$work" && "$2/lumaprobe" clip.yuv 352 288 32767 6 > /dev/null)
cmp "$results/clip.yuv.lumascan/rows.tsv" "$work/metricsResultsCSV.csv"

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
