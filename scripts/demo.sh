#!/usr/bin/env bash
# Shows what lumaprobe and lumascan do.
#
# usage: scripts/demo.sh            analyses a made clip with known defects and shows what was found
#        scripts/demo.sh FILE...    analyses videos of any format, or folders of them
#
# The results are left in build/demo; the page to open is named at the end.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
demo=$root/build/demo
results=$demo/lumascan-results

"$root/scripts/setup.sh" scan
mkdir -p "$demo"
(
  cd "$root"
  cmake --preset release > /dev/null
  cmake --build --preset release --target lumaprobe lumascan makeClip > /dev/null
)

status=0
if [[ $# -gt 0 ]]; then
  "$root/build/release/lumascan" scan -o "$results" -- "$@" || status=$?
else
  cd "$demo"
  "$root/build/release/makeClip" clip.yuv > defects.tsv
  trap 'rm -f "$demo/clip.yuv"' EXIT
  echo 'A made clip of 352 x 288, 25 frames per second, with known defects. The first rows of lumaprobe:'
  echo
  "$root/build/release/lumaprobe" clip.yuv 352 288 > rows.txt
  sed -n '5,8p' rows.txt
  echo
  echo 'What the indicators show of each defect:'
  echo
  awk -f "$root/scripts/foundDefects.awk" defects.tsv metricsResultsCSV.csv
  echo
  # Most defects are eight frames long: at 25 frames a second too short to be events.
  echo 'The same clip through lumascan, as if it had 6 frames per second:'
  echo
  "$root/build/release/lumascan" --raw 352x288@6 --force -o "$results" clip.yuv
fi
echo
echo "Open $results/index.html in a browser."
exit "$status"
