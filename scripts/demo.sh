#!/usr/bin/env bash
# Shows what lumaprobe does.
#
# usage: scripts/demo.sh        analyses a made clip with known defects and shows what was found
#        scripts/demo.sh FILE   analyses the video in FILE, whatever its format
#
# The report is left in build/demo/metricsResultsCSV.csv.
set -euo pipefail
[[ $# -le 1 ]] || { echo 'usage: scripts/demo.sh [FILE]' >&2; exit 2; }
video=${1:+$(realpath "$1")}
cd "$(dirname "$0")/.."
root=$PWD

scripts/setup.sh build ${video:+video}
cmake --preset release > /dev/null
cmake --build --preset release --target lumaprobe makeClip > /dev/null
mkdir -p build/demo
cd build/demo
raw=$(mktemp "${TMPDIR:-/tmp}/lumaprobe.XXXXXX.yuv")
trap 'rm -f "$raw"' EXIT

if [[ -n $video ]]; then
  # Luma samples stay as they are; odd sides lose their last row or column, since the chroma planes
  # of 4:2:0 cannot follow them. Frames are neither dropped nor repeated.
  facts=$(ffprobe -v error -select_streams v:0 -of default=noprint_wrappers=1:nokey=1 \
    -show_entries stream=width,height,avg_frame_rate "$video")
  { read -r width; read -r height; read -r rate; } <<< "$facts"
  width=$((width / 2 * 2)) height=$((height / 2 * 2))
  fps=$(awk -F/ '{ printf "%.6g", ($1 > 0 && $2 > 0 ? $1 / $2 : 25) }' <<< "$rate")
  ffmpeg -v error -nostdin -noautorotate -y -i "$video" -map 0:v:0 -fps_mode passthrough \
    -vf "crop=$width:$height:0:0,format=yuv420p|yuvj420p" -f rawvideo "$raw"
  "$root/build/release/lumaprobe" "$raw" "$width" "$height" 0x7fff "$fps" > rows.txt
  echo "$video: $width x $height, $fps frames per second"
else
  "$root/build/release/makeClip" "$raw" > defects.tsv
  "$root/build/release/lumaprobe" "$raw" 352 288 > rows.txt
  echo 'A made clip of 352 x 288, 25 frames per second, with known defects'
fi

echo
echo 'The first rows:'
sed -n '5,10p' rows.txt
echo
if [[ -n $video ]]; then
  awk -f "$root/scripts/summary.awk" metricsResultsCSV.csv
else
  awk -f "$root/scripts/foundDefects.awk" defects.tsv metricsResultsCSV.csv
fi
echo
echo "All rows: $root/build/demo/metricsResultsCSV.csv"
