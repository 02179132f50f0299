#!/usr/bin/env bash
# Holds every indicator to its number of instructions per luma pixel and of mispredicted branches per
# thousand of them, which no load of the machine changes: fails when one needs over 2 % more
# instructions, or over 10 % more mispredictions, than bench/instructionBudget.tsv allows.
#
# usage: scripts/instructionBudget.sh [--update | --full] [SOURCE BUILD]
#   --update   writes what was measured to the file
#   --full     measures all fifteen together at 1920 x 1080 instead, against the goals
#
# What is counted is what one further frame costs: a run over clean frames of the made clip, less a run
# over the first of them alone, less the same difference for a run without indicators. So there is
# neither start-up, first frame, reading nor printing in it, and eight further frames are one whole
# period of flickering. valgrind counts, and offers programs AVX2 at most. Its branch predictor is a
# simple one: real ones do better, by and large in proportion.
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

INSTRUCTIONS_GOAL=9.8     # per luma pixel, all fifteen together
MISPREDICTIONS_GOAL=45000 # per frame of 1920 x 1080
width=352 height=288 frames=9
[[ $mode != full ]] || width=1920 height=1080 frames=2
bytes=$((width * height * frames * 3 / 2))
head -c "$bytes" < <("$build/makeClip" /dev/stdout "$width" "$height" 2> /dev/null) > clip.yuv
if [[ $(stat -c %s clip.yuv) != "$bytes" ]]; then
  echo "instructionBudget.sh: $build/makeClip made no clip" >&2
  exit 1
fi

# $1: mask, $2: number of frames. Instructions and mispredictions, each the fewest of some runs: the
# order in which threads ask for memory decides how much of it is used again and has to be cleared.
runs=3
count() {
  local i
  for ((i = 0; i < runs; ++i)); do
    valgrind --tool=callgrind --branch-sim=yes --callgrind-out-file=/dev/null \
      "$build/lumaprobe" clip.yuv "$width" "$height" "$1" "$2" limit 2> log.txt > rows.txt ||
      { cat log.txt >&2; exit 1; }
    sed -n 's/.*Collected : //p' log.txt
  done | awk '
    NR == 1 || $1 < instructions { instructions = $1 }
    NR == 1 || $3 + $5 < mispredictions { mispredictions = $3 + $5 }
    END { print instructions, mispredictions }'
}

# $1: mask. Of all frames after the first.
further() {
  local long short
  long=$(count "$1" "$frames")
  short=$(count "$1" 1)
  awk '{ print $1 - $3, $2 - $4 }' <<< "$long $short"
}

none=$(further 0)
# $1: mask. Instructions per luma pixel and mispredictions per thousand of them.
perPixel() {
  local counts
  counts=$(further "$1")
  awk -v pixels=$((width * height * (frames - 1))) '{
    printf "%.4f\t%.3f\n", ($1 - $3) / pixels, ($2 - $4) * 1000 / pixels
  }' <<< "$counts $none"
}

if [[ $mode == full ]]; then
  measured=$(perPixel 0x7fff)
  awk -v pixels=$((width * height)) -v instructions="$INSTRUCTIONS_GOAL" \
    -v mispredictions="$MISPREDICTIONS_GOAL" -v size="$width x $height" '{
      each = $2 * pixels / 1000
      printf "all fifteen, %s: %.4f instructions per luma pixel, the goal is at most %s\n", size, $1, instructions
      printf "%d mispredictions per frame, the goal is at most %d\n", each, mispredictions
      exit $1 > instructions || each > mispredictions
    }' <<< "$measured"
  exit
fi

measure() {
  local mask name allowed
  while IFS=$'\t' read -r mask name allowed; do
    if [[ $mask == 0x* ]]; then allowed=$(perPixel "$mask")$'\t'$allowed; fi
    printf '%s\t%s\t%s\n' "$mask" "$name" "$allowed"
  done < "$budget" > measured.tsv
}

# Shows what was measured beside its budget. Below a hundredth of an instruction per pixel, or half a
# misprediction per thousand, there is nothing but a thread's start in the figure.
isWithinBudget() {
  awk -F '\t' '
    $1 !~ /^0x/ {
      printf "%-7s %-19s %12s %10s %14s %10s\n", "mask", "indicator", "instructions", "budget",
        "mispredictions", "budget"
      next
    }
    {
      isOver = ($3 > $5 * 1.02 && $3 > $5 + 0.01) || ($4 > $6 * 1.1 && $4 > $6 + 0.5)
      printf "%-7s %-19s %12.4f %10.4f %14.3f %10.3f%s\n", $1, $2, $3, $5, $4, $6,
        isOver ? "  OVER BUDGET" : ""
      over += isOver
    }
    END { exit over > 0 }' measured.tsv
}

if [[ $mode == check ]]; then
  # Mostly one run is within the budgets already.
  runs=1
  measure
  if isWithinBudget; then exit; fi
  echo 'Once more, now the fewest of three runs:'
  runs=3
fi
measure
if [[ $mode == update ]]; then
  isWithinBudget || true
  awk -F '\t' -v OFS='\t' '$1 ~ /^0x/ { NF = 4 } 1' measured.tsv > "$budget"
else
  isWithinBudget
fi
