#!/usr/bin/env bash
# Files of every kind, whole, odd, cut and damaged: none crashes lumascan or hangs it, every result keeps to the
# schema, and none that was cut is called complete. What is said of damage is looked at by damageTold.py.
#
# usage: robustness.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
source=$1
lumascan=$2/lumascan
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

make() { ffmpeg -nostdin -v error -y "$@"; }
picture=(-f lavfi -i testsrc2=size=320x240:rate=25:duration=1)
sound=(-f lavfi -i sine=duration=1)
h264=(-c:v libx264 -preset ultrafast)

mkdir whole odd none cut flipped
# Containers and codecs.
make "${picture[@]}" "${sound[@]}" "${h264[@]}" -pix_fmt yuv420p -movflags faststart whole/a.mp4
make "${picture[@]}" "${sound[@]}" "${h264[@]}" -pix_fmt yuv420p whole/b.mkv
make "${picture[@]}" "${sound[@]}" -c:v mpeg4 -bf 2 whole/c.avi
make "${picture[@]}" "${sound[@]}" -c:v mpeg2video whole/d.ts
make "${picture[@]}" -c:v libvpx -deadline realtime whole/e.webm
make "${picture[@]}" -c:v libtheora whole/f.ogv
make "${picture[@]}" -c:v flv1 whole/g.flv
make "${picture[@]}" whole/h.gif
make "${picture[@]}" -pix_fmt yuv420p whole/i.y4m
make "${picture[@]}" -c:v mjpeg -pix_fmt yuvj420p whole/j.mov
# Pixel formats, sizes, timing.
make "${picture[@]}" "${h264[@]}" -pix_fmt yuv420p10le odd/10bit.mkv
make "${picture[@]}" "${h264[@]}" -pix_fmt yuv422p odd/422.mkv
make "${picture[@]}" "${h264[@]}" -pix_fmt yuv444p odd/444.mp4
make "${picture[@]}" "${h264[@]}" -pix_fmt yuvj420p odd/full.mp4
make -f lavfi -i testsrc=size=321x241:rate=25:duration=1 -c:v ffv1 -pix_fmt yuv420p odd/size.mkv
make -f lavfi -i testsrc=size=3x5:rate=25:duration=1 -c:v ffv1 -pix_fmt yuv444p odd/tiny.mkv
make "${picture[@]}" -vf "setpts='N*(N+1)/80/TB'" -fps_mode vfr "${h264[@]}" -pix_fmt yuv420p odd/vfr.mkv
make "${picture[@]}" -flags +ilme+ildct -c:v mpeg2video -top 1 odd/interlaced.mpg
make -display_rotation 90 -i whole/a.mp4 -c copy odd/rotated.mp4 2> /dev/null ||
  make -i whole/a.mp4 -c copy -metadata:s:v rotate=90 odd/rotated.mp4
make "${picture[@]}" -vf format=yuva420p -c:v ffv1 odd/alpha.mkv
make "${picture[@]}" -c:v png -pix_fmt rgba odd/rgba.mov
make "${picture[@]}" -c:v ffv1 -pix_fmt gray odd/gray.mkv
make "${picture[@]}" -frames:v 1 "${h264[@]}" -pix_fmt yuv420p odd/one.mp4
cp odd/444.mp4 odd/wrong.avi
# Nothing to analyse.
make "${sound[@]}" none/sound.mp4
make "${picture[@]}" -frames:v 1 cover.png
make "${sound[@]}" -i cover.png -map 0 -map 1 -c:v copy -disposition:v attached_pic none/cover.mp4
make "${picture[@]}" -frames:v 0 "${h264[@]}" none/zero.mkv
printf 'YUV4MPEG2 W320 H240 F25:1\n' > none/zero.y4m
: > none/empty.mp4
echo 'no video' > none/text.mp4
head -c 100000 /dev/zero > none/zeros.mkv
# Cut at some tenths. A transport stream says nothing about its length: it is cut inside a packet.
for file in whole/[a-ce-i].* whole/d.ts; do
  size=$(stat -c %s "$file")
  for tenth in 1 4 7 9; do
    bytes=$((size * tenth / 10))
    [[ $file != *.ts ]] || bytes=$((bytes / 188 * 188 + 94))
    head -c "$bytes" "$file" > "cut/$tenth.${file#whole/}"
  done
done
# More and more bits turned over, anywhere.
python3 - <<'PYTHON'
import pathlib
import random

for file in sorted(pathlib.Path("whole").iterdir()):
    for step, per_100000_bytes in enumerate([5, 50, 1000]):
        random.seed(step)
        data = bytearray(file.read_bytes())
        for _ in range(1 + len(data) * per_100000_bytes // 100000):
            data[random.randrange(len(data))] ^= 1 << random.randrange(8)
        pathlib.Path("flipped", f"{step}.{file.name}").write_bytes(data)
PYTHON
# A name may be anything.
for name in 'sp ace' "q\"uo'te" $'new\nline' $'in\xff\xfevalid' '<img src=x onerror=alert(1)>' '-dash' '%41#?&amp;'; do
  cp odd/one.mp4 "odd/$name.mp4"
done

# What hangs meets the time limit of the whole test.
status=0
"$lumascan" whole odd none cut flipped --stall-timeout 0 > out.txt 2> err.txt || status=$?
if [[ $status != 3 ]] || grep -aE 'trying once more|given up|signal' err.txt; then
  cat err.txt
  echo "robustness: status $status"
  exit 1
fi
"$source/tests/lumascan/validateResults.py" "$source/docs/result.schema.json" lumascan-results
python3 - <<'PYTHON'
import json
import pathlib
import sys

EXPECTED = {"whole": {"complete"}, "odd": {"complete"}, "none": {"failed"}, "cut": {"partial", "failed"},
            "flipped": {"complete", "partial", "failed"}}
wrong = 0
seen = dict.fromkeys(EXPECTED, 0)
for path in sorted(pathlib.Path("lumascan-results").rglob("result.json")):
    folder = path.relative_to("lumascan-results").parts[0]
    result = json.loads(path.read_text(encoding="utf-8"))
    seen[folder] += 1
    if result["status"] not in EXPECTED[folder]:
        print(f"{path}: {result['status']}: {result['error']}")
        wrong += 1
print(seen)
sys.exit(wrong > 0 or min(seen.values()) == 0)
PYTHON
