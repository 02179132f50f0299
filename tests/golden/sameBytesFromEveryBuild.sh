#!/bin/sh
# GCC and clang, -O0 and -O3, with and without AVX2, and one run and the next write the same bytes, on
# clips that lead to ordinary values and to infinite and undefined ones. No build gives a warning.
set -eu
source=$1
build=$2
cd "$source"
for preset in clang unoptimised portable; do
  cmake --preset "$preset" -DLUMAPROBE_TESTS=OFF -DLUMAPROBE_WERROR=ON > /dev/null
  cmake --build --preset "$preset" --target lumaprobe > /dev/null
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# 352 x 288 of value 255, where rounding leaves the variance below 0.
white() { head -c $((352 * 288 * 3 / 2 * 12)) /dev/zero | tr '\0' '\377'; }

"$build/makeClip" clip.yuv > /dev/null
white > white.yuv
head -c 400000 clip.yuv > short.yuv
: > empty.yuv

# $1: program, $2: folder for its output.
analyse_all() {
  mkdir "$2"
  (
    cd "$2"
    n=0
    while read -r arguments; do
      n=$((n + 1))
      # shellcheck disable=SC2086  # a line of words
      "$1" $arguments > "$n.console" || echo "status $?" >> "$n.console"
      mv metricsResultsCSV.csv "$n.report"
    done <<EOF
../clip.yuv 352 288
../clip.yuv 700 599 0xffff 29.97
../white.yuv 352 288
../short.yuv 17 33
../short.yuv 47 100
../short.yuv 7 5 0x7f7f
../short.yuv 1 1 0x7f7f 25 9
../short.yuv 3 300 0x7f7f 9
../clip.yuv 7 5
../empty.yuv 64 64 0xffff 20 20 20
EOF
  )
}
analyse_all "$build/lumaprobe" release
analyse_all "$build/lumaprobe" again
analyse_all "$source/build/clang/lumaprobe" clang
analyse_all "$source/build/unoptimised/lumaprobe" unoptimised
analyse_all "$source/build/portable/lumaprobe" portable
for other in again clang unoptimised portable; do diff -r release "$other"; done
# The clips do lead to what is printed differently when a compiler interferes.
grep -q -e -nan release/3.console
grep -q inf release/*.console
