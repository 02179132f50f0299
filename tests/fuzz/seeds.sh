#!/bin/sh
# Writes the inputs that the kept corpora began with, one folder for each fuzz target, to a folder.
#
# usage: tests/fuzz/seeds.sh FOLDER
set -eu
[ $# = 1 ] || { echo 'usage: tests/fuzz/seeds.sh FOLDER' >&2; exit 2; }
mkdir -p "$1/fuzzCommandLine" "$1/fuzzFrame" "$1/fuzzRun"

# $1: name, then a command line.
cd "$1/fuzzCommandLine"
commandLine() {
  name=$1
  shift
  if [ $# = 0 ]; then : > "$name"; else printf '%s\0' "$@" > "$name"; fi
}
commandLine nothing
commandLine programAlone lumaprobe
commandLine twoArguments lumaprobe a.yuv 352
commandLine threeArguments lumaprobe a.yuv 352 288
commandLine hexadecimalMask lumaprobe a.yuv 352 288 0x7fff
commandLine octalMask lumaprobe a.yuv 352 288 0177 29.97
commandLine decimalMask lumaprobe a.yuv 352 288 65 25 1
commandLine allSeven lumaprobe a.yuv 352 288 0x3 30 100 5
commandLine oneMore lumaprobe a.yuv 352 288 0x3 30 100 5 6
commandLine emptyTexts '' '' '' '' '' '' '' ''
commandLine signs lumaprobe a.yuv -352 +288 -1 -25 -7 -8
commandLine whiteSpace lumaprobe a.yuv '	 352' ' 288 ' '  0x3' ' 30' ' -5' 0
commandLine signedBounds lumaprobe a.yuv 9223372036854775807 -9223372036854775808 18446744073709551615 \
  9223372036854775808 -9223372036854775809 0
commandLine maskAboveSignedNumbers lumaprobe a.yuv 1 1 9223372036854775873
commandLine pastBounds lumaprobe a.yuv 4294967328 99999999999999999999 0xffffffffffffffffff 1e400 \
  -99999999999999999999 0
commandLine halfNumbers lumaprobe a.yuv 0x10 32abc 0x 1e+ 3.9 0
commandLine exponents lumaprobe a.yuv 1 1 -0 2.5e-3
commandLine hexadecimalRate lumaprobe a.yuv 1 1 0X41z 0x1.8p3
commandLine infiniteRate lumaprobe a.yuv 1 1 09 -infinity
commandLine notANumber lumaprobe a.yuv 1 1 x nan
commandLine tinyRate lumaprobe a.yuv 1 1 0 4.9e-324

# $1: name, $2 $3: width and height, $4: mask, $5: number of the content, from 1 on, or 0 for the bytes
# that follow; $6: frames, $7: number of the frame rate, and 128 for threads, $8: seed. Further
# arguments are bytes, as printf takes them.
cd "../fuzzFrame"
# shellcheck disable=SC2059  # formats of bytes that are computed
word() { printf "\\$(printf %o $(($1 & 255)))\\$(printf %o $(($1 >> 8)))"; }
# The number that chooses a side of 1 to 1100.
side() { if [ "$1" -le 100 ]; then word $(($1 - 1)); else word $((49500 + $1 - 1)); fi; }
# shellcheck disable=SC2059
byte() { printf "\\$(printf %o "$1")"; }
video() {
  {
    side "$2"
    side "$3"
    word "$4"
    byte "$5"
    byte $(($6 - 1))
    byte "$7"
    word "$8"
    # shellcheck disable=SC2059
    [ $# -lt 9 ] || printf "$9"
  } > "$1"
}
all=32767
content=1
for name in flat noise scene blackAndWhite tiles narrowNoise slope brightNoise combed nearBlackout \
  barred repeated sparse ramps gridStrokes; do
  video "$name" $((33 + content)) $((66 - content)) $all $content 3 $((content % 8)) $content
  content=$((content + 1))
done
video region 256 256 $all 5 1 0 1
video regionOfStrokes 256 260 $all 15 1 0 2
video twoRegionsBroad 520 130 $all 3 1 128 3
video pastAThousand 1040 18 $all 9 2 0 4
video wideStrip 1099 48 $all 12 1 0 5
video onePixel 1 1 $all 0 3 0 0 '\5\11\5'
video oneRow 40 1 $all 2 3 0 1
video oneColumn 1 40 $all 2 3 0 1
video narrowCombed 3 40 $all 9 3 1 1
video byteTexture 24 24 $all 0 4 128 0 '\12\120\300\377\0\3\7'
# Sixteen steps of 64 in 256 samples: the square of each is just sixteen times the mean, not above it.
row='\0\0\0\0\0\0\0\0\100\100\100\100\100\100\100\100'
rows=$row$row$row$row$row
video stepsAtTheThreshold 16 16 $all 0 1 0 0 "$rows$rows$rows"'\0\0\0\0\0\0\0\0\100\100\100\100\0\0\0\0'
video atTheEndOfBlackout 48 48 $all 10 1 0 2
# Columns repeat after 5 and so do frames: nothing changes, but 1024 columns on all is another.
video stillPastAThousand 1040 8 16384 0 9 0 0 '\1\2\3\4\5'
video twoPeriods 48 48 $all 6 18 128 7
video twoPeriodsThirtyThreeBlocks 88 24 $all 2 18 0 8
video onlyTemporal 56 40 16704 14 18 1 9
video smallestBlur 16 16 $all 14 4 2 10
video smallestSlice 17 48 $all 13 2 3 11
video whiteWhoseVarianceIsBelowZero 99 99 $all 0 1 0 0 '\377'

# $1: name, $2: arguments, $3: the video, as printf takes it.
cd "../fuzzRun"
# shellcheck disable=SC2059
run() { { echo "$2"; printf "$3"; } > "$1"; }
text='The quick brown fox jumps over the lazy dog, and the lazy dog looks on. '
run defaults '8 8' "$text$text$text"
run noBytes '32 32 0x7fff 3 0' ''
run onePixel '1 1 0x7f7f' 'abcdefghijklm'
run oddSides '7 5 0x7f7f 25' "$text"
run tooShortForAFrame '16 16' "$text"
run shortenedByCount '4 4 0x7f7f 2 0' "$text"
run fromTheSecond '4 4 0xffff 2 1 0' "$text"
run fromBeforeTheFirst '4 4 0x7f7f 5 -3 0' "$text"
run pastTheEnd '4 4 0x7f7f 9 1 0' "$text"
run lastNumber '2 2 0 1 2147483646 0' "$text"
run pastTheLastNumber '2 2 0 2 2147483647 0' "$text"
run fromTheSmallestNumber '2 2 0x7f7f 2 -2147483648 0' "$text"
run negativeCount '2 2 0x7f7f -1 0' "$text"
run zeroWidth '0 8' "$text"
run zeroHeight '8 0' "$text"
run negativeHeight '8 -8' "$text"
run gigantic '65536 65536' "$text"
run barsAboveAndBelow '4 4' 'aaaabcdeefghbbbbchroma..'
run barAtTheLeft '4 4' 'aaabccccddddeeefchroma..'
run maskOfOne '8 8 0x400 25' "$text$text"
run maskOfTemporal '8 8 0x4140 10' "$text$text$text$text$text"
run stillAtTenFrames '2 2 0x140 10' 'aaaabbaaaabbaaaabbcccc'
run noRate '3 3 0x7f7f nan' "$text"
run infiniteRate '3 3 0x7f7f inf' "$text"
run threeArguments '8' "$text"
run twoPeriods '48 48 0x7fff 18 0' "$text$text$text"
run strip '17 48 0x2400 2 0' "$text$text"
