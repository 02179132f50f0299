#!/usr/bin/env bash
# Runs the program for long and far: 200,000 frames in one run, and a file beyond 10 GiB. Every row must
# be the one that the same frame gives in a short run. Memory, threads and open files are read from /proc
# while it runs and must stay level.
#
# usage: scripts/endurance.sh                   minutes
#        scripts/endurance.sh --smoke [BUILD]   6,000 frames and a file beyond 4 GiB, of which only the far
#                                               end is analysed, with the programs in BUILD: seconds
#
# Needs 1 GB in TMPDIR, --smoke 50 MB: the file beyond 10 GiB is sparse.
set -euo pipefail
shopt -s inherit_errexit nullglob
root=$(realpath "$(dirname "$0")/..")
build=$root/build/release
if [[ ${1:-} == --smoke && $# -le 2 ]]; then
  build=$(realpath "${2:-$build}")
  frames=6000 width=256 height=256 borders=(4) gib=5
elif [[ $# == 0 ]]; then
  frames=200000 width=1920 height=1080 borders=(2 4 10) gib=11
  cd "$root"
  scripts/setup.sh build
  cmake --preset release > /dev/null
  cmake --build --preset release --target lumaprobe makeClip > /dev/null
else
  echo 'usage: scripts/endurance.sh [--smoke [BUILD]]' >&2
  exit 2
fi
lumaprobe=$build/lumaprobe
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

MOST_GROWTH=512  # KiB of resident memory, from the first quarter of the run to the last
MOST_THREADS=13  # the main one and one per spatial indicator
LEAST_SAMPLES=8  # two per quarter
PERIOD=8         # comparisons, of flickering
STEP=16384       # bytes of output from one sample to the next

fail() { echo "endurance.sh: $*" >&2; exit 1; }

# Leaves the rows of a run, without their frame numbers, in $1.rows. Then the program's arguments.
rows() {
  local name=$1
  shift
  "$lumaprobe" "$@" > console.txt
  takeRows "$name"
}

# Of the run that has just ended: rows that are numbered from $2 on (0 when not given), and as many on
# standard output as in the report.
takeRows() {
  grep -qx 'File stream closed' console.txt || fail "$1: the run did not come to its end"
  awk -F ' \t' -v frame="${2:-0}" '
    FNR > 1 && $1 + 0 != frame++ { print "row " FNR " is that of frame " $1 > "/dev/stderr"; exit 1 }
    FNR > 1 { print substr($0, length($1) + 1) }' metricsResultsCSV.csv > "$1.rows"
  [[ $(grep -cE '^[0-9]{5,} ' console.txt) == $(wc -l < "$1.rows") ]] || fail "$1: report and output differ"
}

# The same with $1.rows, for a long run: fails when it does not stay level, and says what was seen. The program goes no
# further than its output is read: samples are of equally distant moments, however fast the machine is.
watchedRows() {
  local name=$1 pid files output
  shift
  : > samples
  : > console.txt
  mkfifo output
  "$lumaprobe" "$@" > output < /dev/null &
  pid=$!
  exec {output}< output
  rm output
  while dd bs=$STEP count=1 iflag=fullblock status=none <&"$output" > piece && [[ -s piece ]]; do
    cat piece >> console.txt
    files=("/proc/$pid/fd/"*)
    awk -v files="${#files[@]}" '/^Rss:/ { rss = $2 } /^Threads:/ { threads = $2 }
      END { if (rss) print rss, threads, files }' "/proc/$pid/smaps_rollup" "/proc/$pid/status" \
      >> samples 2> /dev/null || true
  done
  exec {output}<&-
  wait "$pid"
  takeRows "$name"
  awk -v growth="$MOST_GROWTH" -v most="$MOST_THREADS" -v least="$LEAST_SAMPLES" '
    function larger(a, b) { return a > b ? a : b }
    { rss[NR] = $1; files[NR] = $3; threads = larger(threads, $2) }
    END {
      for (i = 1; i <= NR / 4; ++i) {
        firstRss = larger(firstRss, rss[i]); lastRss = larger(lastRss, rss[NR + 1 - i])
        firstFiles = larger(firstFiles, files[i]); lastFiles = larger(lastFiles, files[NR + 1 - i])
      }
      printf "  resident memory   %d KiB in the first quarter, %d KiB in the last\n", firstRss, lastRss
      printf "  open files        %d in the first quarter, %d in the last\n", firstFiles, lastFiles
      printf "  threads           at most %d\n", threads
      printf "  samples           %d\n", NR
      isLevel = lastRss - firstRss < growth && lastFiles == firstFiles && threads <= most
      if (NR < least) print "  TOO FEW SAMPLES"
      if (!isLevel) print "  NOT LEVEL"
      exit !isLevel || NR < least
    }' samples || fail "$name: see above"
}

# $1: number of bytes, then width and height. The beginning of the made clip.
madeClip() { head -c "$1" < <("$build/makeClip" /dev/stdout "${@:2}" 2> /dev/null); }

sameRows() {
  cmp "$1.rows" "$2.rows" || { diff "$1.rows" "$2.rows" | sed -n 1,6p || true; fail "the rows of $1 and $2 differ"; }
}

# A stretch of bytes of the made clip, taken for frames of 64 x 48, over and over. It is a whole number of
# flickering's periods, so that from its second turn on its rows are those of any other turn.
turn=232
[[ $((turn % PERIOD)) == 0 ]]
small=$((64 * 48 * 3 / 2))
madeClip $((turn * small)) 256 256 > turn.yuv
[[ $(stat -c %s turn.yuv) == $((turn * small)) ]] || fail "$build/makeClip made no clip"
echo "$frames frames of 64 x 48 in one run"
cat turn.yuv turn.yuv > twoTurns.yuv
rows twoTurns twoTurns.yuv 64 48
[[ $(sort -u twoTurns.rows | wc -l) -gt $((turn / 2)) ]] || fail 'the rows of the clip are too much alike'
for ((i = 0; i < frames; i += turn)); do cat turn.yuv; done > long.yuv
truncate -s $((frames * small)) long.yuv
awk -v turn="$turn" -v frames="$frames" '
  { row[NR - 1] = $0 }
  END { for (k = 0; k < frames; ++k) print row[k < turn ? k : turn + k % turn] }' twoTurns.rows > expected.rows
watchedRows long long.yuv 64 48
sameRows long expected
echo "  right rows        $(wc -l < long.rows)"
rm long.yuv

# A sparse file: eight frames of the made clip, others each time, lie across every border and at the end.
# All else is black.
made=8
firsts=(0 17 41 57) # stretches of the made clip without defect
bytes=$((width * height * 3 / 2))
count=$((gib * 2 ** 30 / bytes))
size=$((count * bytes))
starts=()
for border in "${borders[@]}"; do starts+=($((border * 2 ** 30 / bytes - 4))); done
starts+=($((count - made)))
madeClip $(((firsts[-1] + made) * bytes)) "$width" "$height" > clip.yuv
truncate -s "$size" far.yuv
echo "$count frames of $width x $height, $size bytes"
for i in "${!starts[@]}"; do
  start=${starts[i]}
  dd if=clip.yuv of="place$i.yuv" bs="$bytes" skip="${firsts[i]}" count="$made" status=none
  dd if="place$i.yuv" of=far.yuv bs="$bytes" seek="$start" conv=notrunc status=none
  # A sixth argument makes the fifth the number of frames, a seventh the sixth the first of them.
  rows alone "place$i.yuv" "$width" "$height" 0x7fff "$made" unread
  "$lumaprobe" far.yuv "$width" "$height" 0x7fff "$made" "$start" unread > console.txt
  takeRows fromStart "$start"
  sameRows fromStart alone
  [[ $(sort -u alone.rows | wc -l) == "$made" ]] || fail 'the made frames are alike'
  echo "  right rows        $made from frame $start on, byte $((start * bytes))"
done

# In one run, too: the rows from eight frames in front of the made ones up to sixteen behind them are
# those of a short clip in which they lie at the same place of flickering's period.
if [[ $# == 0 ]]; then
  truncate -s $((3 * PERIOD * bytes)) black.yuv
  rows black black.yuv "$width" "$height"
  awk -v period="$PERIOD" -v count="$count" '
    { row[NR - 1] = $0 }
    END { for (k = 0; k < count; ++k) print row[k < period ? k : period + k % period] }' black.rows > expected.rows
  for i in "${!starts[@]}"; do
    start=${starts[i]}
    lead=$((2 * PERIOD + start % PERIOD)) behind=$((count - start - made))
    behind=$((behind < 16 ? behind : 16))
    truncate -s 0 short.yuv
    dd if="place$i.yuv" of=short.yuv bs="$bytes" seek="$lead" conv=notrunc status=none
    truncate -s $(((lead + made + behind) * bytes)) short.yuv
    rows short short.yuv "$width" "$height"
    { head -n $((start - PERIOD)) expected.rows
      tail -n $((PERIOD + made + behind)) short.rows
      tail -n +$((start + made + behind + 1)) expected.rows; } > replaced.rows
    mv replaced.rows expected.rows
  done
  watchedRows far far.yuv "$width" "$height"
  sameRows far expected
  echo "  right rows        $(wc -l < far.rows) in one run"
fi
