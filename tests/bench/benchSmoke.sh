#!/bin/sh
# The benchmark script measures every row of its table and leaves nothing behind; every kernel runs.
set -eu
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR="$work/tmp"
mkdir "$TMPDIR"

"$source/scripts/bench.sh" --smoke "$build" > "$work/table.md"

# $1: a pattern, $2: the number of rows that begin with it.
expect_rows() {
  if [ "$(grep -cE "^\| $1" "$work/table.md")" != "$2" ]; then
    echo "not $2 rows of \"$1\":"
    cat "$work/table.md"
    exit 1
  fi
}
expect_rows 'lumaprobe, all fifteen \|' 2
expect_rows 'lumaprobe, none' 2
expect_rows 'lumaprobe of the other build, all fifteen' 1
grep -qE '^In 3 runs .* [0-9]+\.[0-9]+ of the time and [0-9]+\.[0-9]+ of the processor time' "$work/table.md"
expect_rows '`dd`' 1
expect_rows '(256 x 256|352 x 288) \|' 2
expect_rows '(10|50|200) \|' 3
if command -v ffmpeg > /dev/null; then
  expect_rows 'FFmpeg(,| without)' 2
  expect_rows '[a-z ]+ \| `0x[0-9]+` \| [0-9.]+ \| [0-9.]+ \| `[a-z]+`' 6
fi
if [ -x "$build/kernelBench" ]; then
  expect_rows '(analyse|twelve)' 3
  "$build/kernelBench" --benchmark_filter=/352x288 --benchmark_min_time=0.001 > "$work/kernels.txt" 2>&1
fi
if grep -E '\| *-?(nan|inf)? *\|' "$work/table.md" | grep -vxF '| | |'; then
  echo 'a cell is empty or no number'
  exit 1
fi

test -z "$(ls "$TMPDIR")"
