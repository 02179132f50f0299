#!/bin/sh
# What scans leave behind and commands print is, byte for byte, what is kept here. The expectation comes from an earlier
# state of the program itself: it says nothing about whether values are right, and is there to show that a change of the
# code's structure changes no byte of any file. Where bytes are meant to change, look at the difference and keep it:
# "keptScans.sh SOURCE BUILD keep".
#
# The clip is raw video, so that no codec's version shows in it. What differs from run to run is masked; pages are
# compared without styles, scripts, packed frames and pictures.
set -eu
kept=$1/tests/lumascan/kept
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# $1: the expected exit status, $2: the output's name, then the arguments.
run() {
  expected=$1
  name=$2
  shift 2
  status=0
  "$build/lumascan" "$@" > "$name.out" 2> "$name.err" < /dev/null || status=$?
  [ "$status" = "$expected" ] || {
    cat "$name.err"
    echo "lumascan $*: exit status $status instead of $expected"
    exit 1
  }
}

# Without progress, which shows where a machine is slow.
scan() {
  expected=$1
  name=$2
  shift 2
  run "$expected" "$name" scan --progress none "$@"
}

"$build/makeClip" whole.yuv 256 256 > /dev/null
head -c 8000000 whole.yuv > cut.yuv
head -c 1000 whole.yuv > tooShort.yuv
echo 'no video' > text.mp4
echo '{"freeze": {"min_s": 0.1, "severity": "warn"}, "blur": {"enabled": false}, "noise": {"enter": 4}}' > other.json

scan 3 scan --raw 256x256@25 --thumbs none --fail-on fail -j 1 whole.yuv cut.yuv tooShort.yuv
scan 0 range --raw 256x256@25 --thumbs none -o range --start f:20 --end 00:00:02:04 --fps 30 \
  --indicators blackout,blur,freezing,temporal_activity,exposure,slice whole.yuv
scan 3 failed -o failed --json text.mp4
scan 0 first --raw 256x256@25 --thumbs none -o judged whole.yuv
scan 1 judged --raw 256x256@25 --thumbs none -o judged --thresholds other.json --fail-on warn whole.yuv
scan 0 upToDate --raw 256x256@25 --thumbs none -o judged --thresholds other.json whole.yuv
run 1 events events --thresholds other.json --fail-on warn lumascan-results judged
run 0 eventsJson events --json lumascan-results failed range
run 0 report report lumascan-results/cut.yuv.lumascan -o one.html
run 0 reports report lumascan-results range failed -o all.html
run 0 probe probe --raw 256x256@25 cut.yuv
run 0 probeJson probe --json --raw 256x256@25 cut.yuv

rm whole.yuv cut.yuv tooShort.yuv text.mp4 other.json
find . '(' -name '*.json' -o -name '*.out' ')' -exec sed -i -E \
  -e 's/"(mtime_ns|elapsed_s)": [0-9.e-]+/"\1": 0/' -e 's/"started": "[^"]*"/"started": ""/' -e "s|$work|FOLDER|" \
  -e 's/"on": (true|false)/"on": true/' -e 's/"why_not": .*/"why_not": null/' '{}' +
find . -name '*.html' -exec sed -i -n '/^<main>/,/<\/main>/p; /id="model">/p' '{}' +

# The short range as it is, for people to see what differs; of everything a checksum.
sums=$(find . -type f -exec sha256sum '{}' + | LC_ALL=C sort -k 2)
mkdir shown
echo "$sums" > shown/checksums.txt
cp range/whole.yuv.lumascan/*.json range/whole.yuv.lumascan/*.csv range/whole.yuv.lumascan/rows.tsv shown
cp scan.out scan.err judged.out events.out probe.out lumascan-results/summary.csv shown
if [ "${3-}" = keep ]; then
  rm -rf "$kept"
  cp -r shown "$kept"
fi
diff -r "$kept" shown
