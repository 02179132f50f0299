#!/usr/bin/env bash
# Holds every indicator to its number of instructions per luma pixel, which no load of the machine
# changes: fails when one needs over 2 % more than bench/instructionBudget.tsv allows.
#
# usage: scripts/instructionBudget.sh [--update | --full] [SOURCE BUILD]
#   --update   writes what was measured to the file
#   --full     measures all fifteen together at 1920 x 1080 instead, against the goal
#
# What is counted is what one further frame costs: a run over clean frames of the made clip, less a run
# over the first of them alone, less the same difference for a run without indicators. So there is
# neither start-up, first frame, reading nor printing in it, and eight further frames are one whole
# period of flickering. valgrind counts, and offers programs AVX2 at most.
set -euo pipefail
shopt -s inherit_errexit
mode=check
if [[ ${1:-} == --* ]]; then
  mode=${1#--}
  shift
fi
if [[ ! $mode =~ ^(check|update|full)$ || ($# != 0 && $# != 2) ]]; then
  echo 'usage: scripts/instructionBudget.sh [--update | --full] [SOURCE BUILD]' >&2
  exit 2
fi
root=$(realpath "${1:-$(dirname "$0")/..}")
build=$(realpath "${2:-$root/build/release}")
budget=$root/bench/instructionBudget.tsv
if ! grep -qw avx2 /proc/cpuinfo; then
  echo 'instructionBudget.sh: skipped: the budgets are for AVX2, which this processor has not'
  exit 0
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

GOAL=12 # instructions per luma pixel, all fifteen together
width=352 height=288 frames=9
[[ $mode != full ]] || width=1920 height=1080 frames=2
bytes=$((width * height * frames * 3 / 2))
head -c "$bytes" < <("$build/makeClip" /dev/stdout "$width" "$height" 2> /dev/null) > clip.yuv
if [[ $(stat -c %s clip.yuv) != "$bytes" ]]; then
  echo "instructionBudget.sh: $build/makeClip made no clip" >&2
  exit 1
fi

# $1: mask, $2: number of frames. The fewest of three runs: the order in which threads ask for memory
# decides how much of it is used again and has to be cleared.
instructions() {
  for _ in 1 2 3; do
    valgrind --tool=callgrind --callgrind-out-file=/dev/null \
      "$build/lumaprobe" clip.yuv "$width" "$height" "$1" "$2" limit 2> log.txt > rows.txt ||
      { cat log.txt >&2; exit 1; }
    sed -n 's/.*Collected : //p' log.txt
  done | sort -n | sed -n 1p
}

# $1: mask. Of all frames after the first.
further() {
  local long short
  long=$(instructions "$1" "$frames")
  short=$(instructions "$1" 1)
  echo $((long - short))
}

none=$(further 0)
perPixel() {
  local count
  count=$(further "$1")
  awk -v n=$((count - none)) -v pixels=$((width * height * (frames - 1))) 'BEGIN { printf "%.4f\n", n / pixels }'
}

if [[ $mode == full ]]; then
  measured=$(perPixel 0x7fff)
  echo "all fifteen, $width x $height: $measured instructions per luma pixel, the goal is at most $GOAL"
  awk -v measured="$measured" -v goal="$GOAL" 'BEGIN { exit measured > goal }'
  exit
fi

while IFS=$'\t' read -r mask name allowed; do
  if [[ $mask == 0x* ]]; then allowed=$(perPixel "$mask")$'\t'$allowed; fi
  printf '%s\t%s\t%s\n' "$mask" "$name" "$allowed"
done < "$budget" > measured.tsv

# Below a hundredth of an instruction per pixel there is nothing but a thread's start in the figure.
awk -F '\t' '
  $1 !~ /^0x/ { printf "%-7s %-19s %10s %10s\n", "mask", "indicator", "measured", "budget"; next }
  {
    isOver = $3 > $4 * 1.02 && $3 > $4 + 0.01
    printf "%-7s %-19s %10.4f %10.4f%s\n", $1, $2, $3, $4, isOver ? "  OVER BUDGET" : ""
    over += isOver
  }
  END { exit over > 0 }' measured.tsv && status=0 || status=1

if [[ $mode == update ]]; then
  awk -F '\t' -v OFS='\t' '$1 ~ /^0x/ { NF = 3 } 1' measured.tsv > "$budget"
  status=0
fi
exit "$status"
