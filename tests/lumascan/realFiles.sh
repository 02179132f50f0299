#!/usr/bin/env bash
# Clips that real encoders made, of many codecs and ages, from Debian's packages: all are analysed completely, and
# where luma is taken as it is, rows.tsv is what lumaprobe reports on what the ffmpeg program decodes.
#
# usage: realFiles.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

dpkg -L python3-imageio python3-mecavideo planetblupi-common gem-doc |
  grep -E '\.(avi|gif|mkv|mov|mp4|mpg|ogv)$' > clips.txt
test "$(wc -l < clips.txt)" -ge 25
"$build/lumascan" -q --thumbs none --files-from clips.txt

codecs=
compared=0
while read -r clip; do
  results=lumascan-results$clip.lumascan
  facts=$(python3 - "$results/result.json" <<'PYTHON'
import json
import sys

result = json.load(open(sys.argv[1], encoding="utf-8"))
stream, analysis = result["input"], result["analysis"]
print(result["status"], stream["codec"], analysis["luma"], stream["width"], stream["height"], analysis["fps"])
PYTHON
  )
  read -r status codec luma width height fps <<< "$facts"
  [[ $status == complete ]] || { echo "realFiles: $clip is $status"; exit 1; }
  codecs+=" $codec"
  # lumaprobe knows even sizes alone.
  [[ $luma == copied && $((width % 2 + height % 2)) == 0 ]] || continue
  ffmpeg -nostdin -v error -y -flags output_corrupt -noautorotate -i "$clip" -map 0:v:0 -fps_mode passthrough \
    -vf 'format=yuv420p|yuvj420p' -f rawvideo decoded.yuv
  "$build/lumaprobe" decoded.yuv "$width" "$height" 0x7fff "$fps" > /dev/null
  cmp metricsResultsCSV.csv "$results/rows.tsv"
  compared=$((compared + 1))
done < clips.txt
for codec in cinepak gif h264 indeo3 mjpeg mpeg1video mpeg4 msvideo1 theora vp9; do
  [[ " $codecs " == *" $codec "* ]] || { echo "realFiles: no clip of $codec among$codecs"; exit 1; }
done
echo "$(wc -l < clips.txt) clips, $compared compared with lumaprobe"
tr ' ' '\n' <<< "$codecs" | sort | uniq -c
