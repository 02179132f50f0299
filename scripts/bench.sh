#!/usr/bin/env bash
# Measures the whole program and its peers, and writes the table to bench/results.md.
#
# usage: scripts/bench.sh [--against BUILD] [FILE]
#            on the video in FILE, else on clean frames of the made clip; with a row for the lumaprobe
#            in another BUILD, run in turn with this one
#        scripts/bench.sh --smoke [BUILD]
#            everything once and tiny, with the programs in BUILD; prints the table only
#
# Needs about 700 MB in TMPDIR, kept in the page cache while measuring.
set -euo pipefail
shopt -s inherit_errexit
root=$(realpath "$(dirname "$0")/..")
build=$root/build/release
video=
smoke=
other=
if [[ ${1:-} == --smoke && $# -le 2 ]]; then
  smoke=1
  build=$(realpath "${2:-$build}")
  other=$build/lumaprobe
else
  if [[ ${1:-} == --against && $# -ge 2 ]]; then
    other=$(realpath "$2")/lumaprobe
    [[ -x $other ]] || { echo "bench.sh: there is no lumaprobe in $2" >&2; exit 2; }
    shift 2
  fi
  if [[ $# -gt 1 || ${1:-} == -* ]]; then
    echo 'usage: scripts/bench.sh [--against BUILD] [FILE]' >&2
    exit 2
  fi
  video=${1:+$(realpath "$1")}
fi

if [[ $smoke ]]; then
  runs=1 width=640 height=360 frames=4 sizes='256x256 352x288' pixels=1000000 lengths='10 50 200'
else
  runs=5 width=1920 height=1080 frames=200 pixels=$((1920 * 1080 * 200)) lengths='200 2000 20000'
  sizes='352x288 720x576 1280x720 1920x1080 3840x2160 7680x4320'
  cd "$root"
  scripts/setup.sh bench
  cmake --preset release > /dev/null
  cmake --build --preset release --target lumaprobe makeClip runMeasured kernelBench > /dev/null
  cmake --preset portable > /dev/null
  cmake --build --preset portable --target lumaprobe > /dev/null
fi
lumaprobe=$build/lumaprobe
portable=$root/build/portable/lumaprobe
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

has() { command -v "$1" > /dev/null; }
frameBytes() { echo $(($1 * $2 * 3 / 2)); }

# The frames that all clips are scaled from. Those of the made clip that carry no defect are the first
# nine; scaled up they are smooth, so grain is added.
if [[ $video ]]; then
  source=(-i "$video" -map 0:v:0)
  grain=
  content="scaled from $(basename "$video")"
else
  head -c $((9 * $(frameBytes 352 288))) < <("$build/makeClip" /dev/stdout 2> /dev/null) > clean.yuv
  [[ -s clean.yuv ]] || { echo "bench.sh: $build/makeClip made no clip" >&2; exit 1; }
  source=(-f rawvideo -pixel_format yuv420p -video_size 352x288 -i clean.yuv)
  grain=,noise=c0s=6:c0f=t
  content='nine clean frames of the made clip over and over, scaled, with grain'
fi

# $1: file, $2 $3: width and height, $4: frames. Without FFmpeg it holds the same bytes, unscaled.
makeVideo() {
  if has ffmpeg; then
    ffmpeg -v error -nostdin -y -stream_loop -1 "${source[@]}" -frames:v "$4" \
      -vf "scale=$2:$3:flags=bicubic$grain,format=yuv420p" -f rawvideo "$1"
  else
    head -c $(($4 * $(frameBytes "$2" "$3"))) < <(while cat clean.yuv 2> /dev/null; do :; done) > "$1"
  fi
}

# $1: runs, then a command. Of the run with the median time: seconds, seconds of processor time, peak
# KiB, minor faults.
measure() {
  local n=$1
  shift
  for ((i = 0; i < n; ++i)); do
    "$build/runMeasured" output "$@" || { echo "failed: $*" >&2; exit 1; }
  done | sort -g | sed -n "$(((n + 1) / 2))p"
}

# $1: label, $2: runs, then a command, on the large clip. The first row is what others are held against.
whole=
wholeRow() {
  local label=$1 measured
  shift
  measured=$(measure "$@")
  whole=${whole:-$measured}
  awk -v label="$label" -v frames="$frames" -v pixels=$((width * height)) '{
    printf "| %s | %.3f | %.3f | %.1f | %.3f | %.1f | %.2f | %.2f |\n", label, $1, $2, frames / $1,
      $1 * 1e9 / frames / pixels, $3 / 1024, $1 / $5, $2 / $6
  }' <<< "$measured $whole"
}

# Both builds in turn, so that a machine whose speed varies is fair to both: medians of this one's cost
# divided by the other's, run by run.
pairedLine() {
  local pairs=$((3 * runs)) i
  for ((i = 0; i < pairs; ++i)); do
    echo "$(measure 1 "$lumaprobe" "${clip[@]}" "$all") $(measure 1 "$other" "${clip[@]}" "$all")"
  done > pairs.txt
  local median="$(((pairs + 1) / 2))p"
  printf '\nIn %d runs of each build in turn, this one took %.2f of the time and %.2f of the processor time of the other.\n' \
    "$pairs" "$(awk '{ print $1 / $5 }' pairs.txt | sort -g | sed -n "$median")" \
    "$(awk '{ print $2 / $6 }' pairs.txt | sort -g | sed -n "$median")"
}

# $1: what is measured, $2: mask of the indicators, $3: FFmpeg filter.
peerRow() {
  local own peer
  own=$(measure "$runs" "$lumaprobe" "${clip[@]}" "$2")
  peer=$(measure 1 "${ffmpeg[@]}" -vf "$3" "${void[@]}")
  awk -v what="$1" -v mask="$2" -v filter="$3" '{
    printf "| %s | `%s` | %.3f | %.3f | `%s` | %.3f | %.3f | %.1f | %.1f |\n", what, mask, $1, $2, filter,
      $5, $6, $5 / $1, $6 / $2
  }' <<< "$own $peer"
}

# $1: label, $2: frames, then a command, on small frames.
smallRow() {
  local label=$1 n=$2
  shift 2
  measure "$runs" "$@" | awk -v label="$label" -v n="$n" '{
    printf "| %s | %.1f | %.1f | %.0f |\n", label, $1 * 1e6 / n, $2 * 1e6 / n, n / $1
  }'
}

# $1 $2: width and height. Faults are those after the second frame, which has touched all there is.
sizeRow() {
  local w=$1 h=$2 run two
  local n=$((pixels / (w * h)))
  makeVideo sized.yuv "$w" "$h" "$n"
  run=$(measure "$runs" "$lumaprobe" sized.yuv "$w" "$h" "$all")
  two=$(measure 1 "$lumaprobe" sized.yuv "$w" "$h" "$all" 2 limit)
  awk -v size="$w x $h" -v n="$n" -v pixels=$((w * h)) '{
    printf "| %s | %d | %.3f | %.3f | %.1f | %.1f | %.2f | %.1f |\n", size, n, $1 * 1e9 / n / pixels,
      $2 * 1e9 / n / pixels, n / $1, $3 / 1024, $3 * 1024 / pixels, ($4 - $8) / (n - 2)
  }' <<< "$run $two"
  rm sized.yuv
}

# `lumaprobe ... N limit` analyses N frames: the frame rate is the limit when a sixth argument is there.
all=0x7fff
clip=(clip.yuv "$width" "$height")
ffmpeg=(ffmpeg -v error -nostdin -f rawvideo -pixel_format yuv420p -video_size "${width}x$height"
  -i clip.yuv)
void=(-f null -)
chain=siti,blurdetect,blockdetect,signalstats,idet,freezedetect,blackdetect,cropdetect,bitplanenoise

report() {
  cat << EOT
# What a run costs

Written by \`scripts/bench.sh\`; [README.md](README.md) says how to read it.

| | |
|---|---|
| processor | $(sed -n 's/^model name\s*: //p' /proc/cpuinfo | head -n 1), $(nproc) cores$(grep -qw avx2 /proc/cpuinfo && echo ', AVX2') |
| memory | $(awk '/^MemTotal/ { printf "%.1f GiB", $2 / 1048576 }' /proc/meminfo) |
| kernel | $(uname -sr) |
| compiler | $(g++ --version | head -n 1) |
| FFmpeg | $(has ffmpeg && ffmpeg -version | sed -n '1s/ Copyright.*//p' || echo none) |
| frames | $content; in the page cache |
| runs | the median of $runs; FFmpeg's once |

## $frames frames of $width x $height

| what | s | processor s | frames/s | ns/pixel | peak MiB | time, lumaprobe = 1 | processor time, lumaprobe = 1 |
|---|--:|--:|--:|--:|--:|--:|--:|
EOT
  makeVideo clip.yuv "$width" "$height" "$frames"
  wholeRow 'lumaprobe, all fifteen' "$runs" "$lumaprobe" "${clip[@]}" "$all"
  wholeRow 'lumaprobe, none: reading and printing' "$runs" "$lumaprobe" "${clip[@]}" 0
  [[ ! -x $portable ]] ||
    wholeRow 'lumaprobe built without AVX2, all fifteen' "$runs" "$portable" "${clip[@]}" "$all"
  [[ -z $other ]] || wholeRow 'lumaprobe of the other build, all fifteen' "$runs" "$other" "${clip[@]}" "$all"
  wholeRow '`dd`, reading alone' "$runs" dd if=clip.yuv of=/dev/null bs="$(frameBytes "$width" "$height")" \
    status=none
  if has ffmpeg; then
    wholeRow 'FFmpeg without filter' 1 "${ffmpeg[@]}" "${void[@]}"
    wholeRow "FFmpeg, \`$chain\`" 1 "${ffmpeg[@]}" -vf "$chain" "${void[@]}"
  fi
  [[ -z $other ]] || pairedLine
  if has ffmpeg; then
    cat << EOT

One at a time, same clip:

| what | lumaprobe | s | processor s | FFmpeg | s | processor s | times the time | times the processor time |
|---|---|--:|--:|---|--:|--:|--:|--:|
EOT
    peerRow 'spatial and temporal activity' 0x42 siti
    peerRow blockiness 0x1 blockdetect
    peerRow blur 0x20 blurdetect
    peerRow interlace 0x800 idet
    peerRow blackout 0x80 blackdetect
    peerRow freezing 0x140 freezedetect
  fi
  rm clip.yuv

  local small=$((pixels / (352 * 288)))
  cat << EOT

## 352 x 288: what threads cost

The first two rows are whole runs of $small frames, the others kernelBench's: one frame, no reading or
printing. The processor time of threads is theirs all together, in kernelBench's rows the main one's.

| what | us/frame | processor us/frame | frames/s |
|---|--:|--:|--:|
EOT
  makeVideo small.yuv 352 288 "$small"
  smallRow 'lumaprobe, all fifteen' "$small" "$lumaprobe" small.yuv 352 288 "$all"
  smallRow 'lumaprobe, none: reading and printing' "$small" "$lumaprobe" small.yuv 352 288 0
  rm small.yuv
  [[ ! -x $build/kernelBench ]] ||
    "$build/kernelBench" --benchmark_filter='(analyse.*|.*Threads)/352x288' --benchmark_format=csv 2> kernels.err |
    awk -F , '/^"/ { gsub(/"|\/.*/, "", $1); printf "| %s | %.1f | %.1f | %.0f |\n", $1, $3, $4, 1e6 / $3 }'

  cat << EOT

## Cost against size

All fifteen. Minor faults are those of each frame after the second.

| size | frames | ns/pixel | processor ns/pixel | frames/s | peak MiB | peak bytes/pixel | minor faults/frame |
|---|--:|--:|--:|--:|--:|--:|--:|
EOT
  local size
  for size in $sizes; do sizeRow "${size%x*}" "${size#*x}"; done

  cat << EOT

## Memory against length

All fifteen on frames of 64 x 48.

| frames | s | peak MiB | minor faults |
|--:|--:|--:|--:|
EOT
  makeVideo many.yuv 64 48 "${lengths##* }"
  local n
  for n in $lengths; do
    measure 1 "$lumaprobe" many.yuv 64 48 "$all" "$n" limit |
      awk -v n="$n" '{ printf "| %d | %.3f | %.2f | %d |\n", n, $1, $3 / 1024, $4 }'
  done

  cat << EOT

## Commands

\`\`\`
lumaprobe clip.yuv $width $height MASK > output          # build/release, build/portable
dd if=clip.yuv of=/dev/null bs=$(frameBytes "$width" "$height")
${ffmpeg[*]} [-vf FILTERS] ${void[*]}
kernelBench --benchmark_filter='(analyse.*|.*Threads)/352x288'
\`\`\`
EOT
}

report | tee results.md
[[ $smoke ]] || cp results.md "$root/bench/results.md"
