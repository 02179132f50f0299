#!/bin/sh
# Writes the inputs that the kept corpora began with, one folder for each fuzz target, to a folder.
#
# usage: tests/fuzz/seeds.sh FOLDER
#
# Those of fuzzMedia are encoded by the ffmpeg program: another version of it makes other bytes.
set -eu
[ $# = 1 ] || { echo 'usage: tests/fuzz/seeds.sh FOLDER' >&2; exit 2; }
sources=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1/fuzzCommandLine" "$1/fuzzFrame" "$1/fuzzMedia" "$1/fuzzRun" "$1/fuzzStored"

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
commandLine binaryMask lumaprobe a.yuv 1 1 ' -0b11'
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
video twoRegionsBroad 520 260 $all 3 1 128 3
video twoByTwoRegions 512 512 $all 15 1 128 4
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

# $1: name, $2: what the text is, one letter, then the text, as printf takes it.
cd "../fuzzStored"
# shellcheck disable=SC2059
stored() { printf "$2$3" > "$1"; }
header='frame,pts,time_s,duration_s,keyframe,corrupt,blockiness,spatial_activity,letterbox,pillarbox'
header=$header',block_loss,blur,temporal_activity,blackout,freezing,exposure,contrast,interlace,noise'
header=$header',slice,flickering'
values=',1,97.5,0,0.125,,4.5,3,0,0,120,40.25,0.01,1.5,2,'
stored framesNone f ''
stored framesHeader f "$header"'\r\n'
stored framesOne f "$header"'\r\n0,0,0,0.04,1,0'"$values"'\r\n'
stored framesNoCarriageReturn f "$header"'\n'
stored framesWithoutEnd f "$header"'\r\n0,0,0,0.04,1,0'"$values"
stored rowsTwo r '7,512,0.28,0.04,1,0'"$values"'\r\n8,,,,0,1'"$values"'0.5\r\n'
stored rowsUndefined r '0,,,,0,0,,,,,,,,,,,,,,,\r\n1,,,,0,0,,,,,,,,,,,,,,,\r\n'
stored rowsExtreme r '-3,-9223372036854775808,-1.7e308,-1e-320,0,0'"$values"'-0\r\n-2,1,1.7e308,1.7e308,0,0'"$values"'\r\n'
stored rowsLastNumber r '9223372036854775807,0,0,0.04,1,0'"$values"'\r\n'
stored rowsGap r '0,0,0,0.04,1,0'"$values"'\r\n2,0,0,0.04,1,0'"$values"'\r\n'
stored rowsTooFew r '0,0,0,0.04,1\r\n'
stored rowsZeroByte r '0,0,0,0.04,1,0\000'"$values"'\r\n'

stored thresholdsNone t '{}'
stored thresholdsAll t '{"blur": {"enter": 9, "leave": 8, "min_s": 1, "mad": 6, "least": 2, "severity": "fail",
 "enabled": true}, "scene_cut": {"ratio": 4}, "block_loss": {"alone": 400, "hold_s": 0.3}}'
stored thresholdsEntersAtNothing t '{"block_loss": {"enter": 0, "leave": 0, "min_s": 0}, "slice": {"enter": 0, "leave": 0, "min_s": 0}}'
stored thresholdsBelowNothing t '{"slice": {"enter": -10, "leave": -20, "min_s": 0, "ratio": 2}}'
stored thresholdsHuge t '{"noise": {"enter": 1e308, "leave": -1e308}, "blur": {"mad": 1e308, "least": 1e308}}'
stored thresholdsTooLarge t '{"noise": {"enter": 1e999}}'
stored thresholdsNoType t '{"nothing": {}}'
stored thresholdsNoKey t '{"blur": {"nothing": 1}}'
stored thresholdsNotAnObject t '[1, 2]'
stored thresholdsTwice t '{} {}'
stored thresholdsCut t '{"blur": {"enter"'
stored thresholdsDisabled t '{"black": {"enabled": false, "severity": "info"}, "freeze": {"min_s": 0}}'
stored thresholdsWithRows t '{"block_loss": {"min_s": 0}, "slice": {"min_s": 0}}\0000,0,0,0.04,1,0,1,97.5,0,0.125,30,4.5,3,0,0,120,40.25,0.01,1.5,-20,\r\n1,1,0.04,0.04,1,0,1,97.5,0,0.125,300,4.5,3,0,0,120,40.25,0.01,1.5,-2,\r\n'

stored positionFrame p 'f:300'
stored positionLastFrame p 'f:9223372036854775807'
stored positionSeconds p '12.5'
stored positionMinutes p '01:02.25'
stored positionHours p '1:02:03.5'
stored positionTimecode p '00:01:02:24'
stored positionPastAMinute p '1:61'
stored positionSigned p '-1'
stored positionFiveParts p '1:2:3:4:5'

facts='"tool":{"name":"lumascan","version":"1.0.0"},"schema_version":"1.0"'
stored resultNone j ''
stored resultOfNobody j '{}'
stored resultBare j "{$facts}"
stored resultBareFailed j "{$facts"',"status":"failed"}'
stored resultTextForObject j "{$facts"',"input":"a.mp4","analysis":"done","indicators":7,"outputs":[]}'
stored resultNulls j "{$facts"',"input":null,"analysis":null,"status":null,"error":null,"truncated":null,
 "verdict":null,"reasons":null,"indicators":null,"thresholds":null,"outputs":null,"events":null}'
stored resultFailed j "{$facts"',"input":{"path":"a.mp4","size":null,"mtime_ns":null,"checksum":null},"options":{},
 "analysis":null,"status":"failed","error":"it is empty","truncated":false,"warnings":[],"verdict":"incomplete",
 "reasons":["Not analysed: it is empty"],"indicators":{},"thresholds":{},"outputs":{"formats":["csv"],
 "thumbs":"none"},"events":[]}'
stored resultSmall j "{$facts"',"input":{"path":"a.mp4","size":1,"mtime_ns":2,"checksum":"0","frame_rate":25.0},
 "options":{},"analysis":{"fps":25.0,"frames":1,"start_s":0.0,"end_s":0.04,"corrupt_frames":0,"decode_errors":0,
 "ended_by":"end"},"status":"complete","error":null,"truncated":false,"warnings":[],"verdict":"pass","reasons":[],
 "indicators":{"blur":{"mean":2.0}},"thresholds":{"blur":{"enter":5.5,"severity":"warn"}},
 "outputs":{"formats":["csv"],"thumbs":"none"},"events":[{"id":1,"type":"blur","severity":"warn","first_frame":0,
 "last_frame":0,"start_s":0.0,"end_s":0.04,"peak_frame":0,"peak_value":6.0,"threshold":5.5,"at_start":true,
 "at_end":true}]}\0'"$header"'\r\n0,0,0,0.04,1,0'"$values"'\r\n'
stored resultCut j "{$facts"',"input":{"path":"a.mp4","si'
stored resultOtherVersion j '{"tool":{"name":"lumascan"},"schema_version":"2.0"}'
stored resultAnArray j '[{"events":[{}]}]'

stored changesNone c '{}'
stored changesPath c '{"input":{"path":7}}'
stored changesNoPath c '{"input":{"path":null}}'
stored changesNoInput c '{"input":null}'
stored changesNoRate c '{"input":{"frame_rate":null},"analysis":{"fps":null}}'
stored changesRateAsText c '{"input":{"frame_rate":"25"}}'
stored changesNoSize c '{"input":{"size":null}}'
stored changesTruncated c '{"truncated":true,"analysis":{"ended_by":"size_change"}}'
stored changesTruncatedAsText c '{"truncated":"no"}'
stored changesStatus c '{"status":"partial","error":"it is short"}'
stored changesStatusAsNumber c '{"status":1}'
stored changesStatusUnknown c '{"status":"unfinished"}'
stored changesVerdictUnknown c '{"verdict":"good"}'
stored changesVerdictAsNumber c '{"verdict":1}'
stored changesReasons c '{"reasons":[1,"two"]}'
stored changesReasonsAsText c '{"reasons":"one"}'
stored changesError c '{"error":{"code":5}}'
stored changesNoAnalysis c '{"analysis":null}'
stored changesNoFrames c '{"analysis":{"frames":null}}'
stored changesIndicators c '{"indicators":{"blur":null,"noise":5,"slice":{"mean":null},"freezing":{"mean":"1"}}}'
stored changesIndicatorsAsArray c '{"indicators":[]}'
stored changesOverview c '{"indicators":{"blur":{"overview":[1,"x",1e308,-1e308]}}}'
stored changesOutputs c '{"outputs":["csv"]}'
stored changesFormats c '{"outputs":{"formats":"csv"}}'
stored changesNoFormats c '{"outputs":{"formats":["html"]}}'
stored changesOptions c '{"options":{"fps":50}}'
stored changesThresholds c '{"thresholds":{"blur":{"enter":"x"},"noise":5,"slice":{"enter":1e308}}}'
stored changesVersion c '{"tool":{"version":2}}'
stored changesEvents c '{"events":[{"type":"<b>","first_frame":-9223372036854775808,"last_frame":9223372036854775807,
 "start_s":1e308,"end_s":-1e308},5,null,{"peak_frame":18446744073709551615,"severity":"fail"}]}'
stored changesEventsAsObject c '{"events":{"a":{},"b":{"type":"blur"}}}'
stored changesWithRows c '{}\0000,0,0,0.04,1,0'"$values"'\r\n'
stored changesWithTimes c '{}\0000,0,-1e308,0.04,1,0'"$values"'\r\n1,1,0,0.04,1,0'"$values"'\r\n2,1,1.7e308,1e308,1,0'"$values"'\r\n'

cd "../fuzzMedia"
extensions=$(sed -n '/^constexpr const char\* EXTENSIONS/,/};$/p' "$sources/fuzzMedia.cpp" | grep -o '"[a-z0-9]*"')
# The byte that stands for an extension, with $2 added: 64 to begin at the second frame, 128 for a
# picture of each.
extension() { byte $(($(printf '%s\n' "$extensions" | grep -nx "\"$1\"" | cut -d : -f 1) - 1 + ${2:-0})); }
size=32x32
frames=4
source=testsrc2=
beside=
chosen=0
# $1: name, from which the extension is taken, $2: muxer, then how to encode.
media() {
  name=$1
  muxer=$2
  shift 2
  ffmpeg -v error -nostdin -y -f lavfi -i "${source}size=$size:rate=25$beside" -frames:v "$frames" -threads 1 "$@" \
    -map_metadata -1 -flags +bitexact -fflags +bitexact -f "$muxer" encoded
  keep "$name" encoded
}
# $1: name, then files that are put one behind the other.
keep() {
  name=$1
  shift
  case $name in *.*) ending=${name##*.} ;; *) ending= ;; esac
  { extension "$ending" "$chosen" && cat "$@"; } > "$name"
}
bytes() { tail -c "+$((2 + $2))" "$1" | head -c "$3"; }  # of an input's file: $2 from its start, $3 of them
x265='log-level=error:info=0'

media h264.mp4 mp4 -c:v libx264 -g 3 -bf 1 -pix_fmt yuv420p
media fragments.mp4 mp4 -c:v libx264 -g 2 -pix_fmt yuv420p -movflags frag_keyframe+empty_moov+default_base_moof
media indexAhead.mp4 mp4 -c:v libx264 -pix_fmt yuv420p10 -movflags +faststart -timecode 10:00:00:00
media hevc.mp4 mp4 -c:v libx265 -x265-params "$x265" -pix_fmt yuv420p
media av1.mp4 mp4 -c:v libaom-av1 -cpu-used 8 -pix_fmt yuv420p
media mpeg4.mp4 mp4 -c:v mpeg4 -g 3
media svq1.mov mov -c:v svq1
media hap.mov mov -c:v hap
media animation.mov mov -c:v qtrle
media png.mov mov -c:v png
media smc.mov mov -c:v smc
media mjpeg.mov mov -c:v mjpeg
media h264.mkv matroska -c:v libx264 -g 3 -pix_fmt yuv420p
media ffv1.mkv matroska -c:v ffv1 -g 2
media snow.mkv matroska -c:v snow -strict -2
media speedhq.mkv matroska -c:v speedhq
media vp8.webm webm -c:v libvpx
media vp9.webm webm -c:v libvpx-vp9
media av1.webm webm -c:v libaom-av1 -cpu-used 8 -pix_fmt yuv420p
for codec in mpeg4 libxvid msmpeg4 msmpeg4v2 msvideo1 cinepak zlib zmbv asv1 mjpeg; do
  media "$codec.avi" avi -c:v "$codec" -reserve_index_space 1024
done
media flv1.flv flv -c:v flv
media h264.flv flv -c:v libx264 -pix_fmt yuv420p
media flashsv.flv flv -c:v flashsv
media flashsv2.flv flv -c:v flashsv2
media wmv1.wmv asf -c:v wmv1
media wmv2.wmv asf -c:v wmv2
media h264.ts mpegts -c:v libx264 -pix_fmt yuv420p
media hevc.ts mpegts -c:v libx265 -x265-params "$x265" -pix_fmt yuv420p
media mpeg2.ts mpegts -c:v mpeg2video -flags +ilme+ildct
media mpeg1.mpg mpeg -c:v mpeg1video
media mpeg2.mpg vob -c:v mpeg2video
media h264.nut nut -c:v libx264 -pix_fmt yuv420p
media vp8.ogv ogg -c:v libvpx
media theora.ogv ogg -c:v libtheora
media gif.gif gif -c:v gif
media animation.png apng -c:v apng
media several.mjpg mjpeg -c:v mjpeg
media smjpeg.mjpg smjpeg -c:v mjpeg
media multipart.mjpg mpjpeg -c:v mjpeg
media vp8.ivf ivf -c:v libvpx
media vp9.ivf ivf -c:v libvpx-vp9
media av1.ivf ivf -c:v libaom-av1 -cpu-used 8 -pix_fmt yuv420p
media av1.obu obu -c:v libaom-av1 -cpu-used 8 -pix_fmt yuv420p
media h264.h264 h264 -c:v libx264 -pix_fmt yuv420p
media h264 h264 -c:v libx264 -pix_fmt yuv444p
media hevc.hevc hevc -c:v libx265 -x265-params "$x265" -pix_fmt yuv420p
media mpeg1.m2v mpeg1video -c:v mpeg1video
media mpeg2.m2v mpeg2video -c:v mpeg2video
media mpeg4.m4v m4v -c:v mpeg4
media rv10.rm rm -c:v rv10
media rv20.rm rm -c:v rv20
media flv1.swf swf -c:v flv
media mjpeg.swf swf -c:v mjpeg
media roq.roq roq -c:v roqvideo -r 30
media cinepak.cpk film_cpk -c:v cinepak
size=128x96 frames=1
media h263.h263 h263 -c:v h263 -q:v 31
size=176x144
media h261.ts mpegts -c:v h261 -q:v 31
size=24x16 frames=3
media huffyuv.avi avi -c:v huffyuv -reserve_index_space 1024
media utvideo.avi avi -c:v utvideo -reserve_index_space 1024
media magicyuv.avi avi -c:v magicyuv -reserve_index_space 1024
media raw.avi avi -c:v rawvideo -reserve_index_space 1024
media proresOfKostya.mov mov -c:v prores_ks
media prores.mov mov -c:v prores_aw
media jpeg2000.mov mov -c:v jpeg2000
media raw.mov mov -c:v rawvideo -pix_fmt yuyv422
media raw.nut nut -c:v rawvideo -pix_fmt rgb565
media mpeg2.mxf mxf -c:v mpeg2video
media opatom.mxf mxf_opatom -c:v mpeg2video
media eightBits.y4m yuv4mpegpipe -c:v wrapped_avframe -pix_fmt yuv420p
media tenBits.y4m yuv4mpegpipe -strict -1 -c:v wrapped_avframe -pix_fmt yuv422p10
media webp.webp webp -c:v libwebp
media strip.flm filmstrip -c:v rawvideo -pix_fmt rgba
frames=1
media png.png image2pipe -c:v png -pix_fmt rgb48be
media palette.png image2pipe -c:v png -pix_fmt pal8
media jpeg.jpg image2pipe -c:v mjpeg
media jpegls.jpg image2pipe -c:v jpegls
media bmp.bmp image2pipe -c:v bmp
media tiff.tif image2pipe -c:v tiff
media lossless.webp webp -c:v libwebp -lossless 1
media ico.ico ico -c:v bmp
media jpeg2000.j2k image2pipe -c:v jpeg2000
size=32x32
media jpeg2000.jp2 image2pipe -c:v libopenjpeg
media exr.exr image2pipe -c:v exr
media dpx.dpx image2pipe -c:v dpx
media targa.tga image2pipe -c:v targa
media qoi.qoi image2pipe -c:v qoi
media jxl.jxl image2pipe -c:v libjxl
media fits.fits fits -c:v fits
media ppm image2pipe -c:v ppm
media pcx image2pipe -c:v pcx
media sgi image2pipe -c:v sgi

# What there is to find, and what else there may be in a file.
size=32x32 frames=40 source=color=black:
media black.mp4 mp4 -c:v libx264 -bf 0 -pix_fmt yuv420p
frames=20
media gap.mkv matroska -c:v libvpx -vf "setpts=PTS+10*gt(N\\,9)/TB" -vsync vfr
media shortest.webm webm -c:v libvpx-vp9 -vf scale=1:1
source=testsrc2=
chosen=128
frames=12
media allPictures.ts mpegts -c:v mpeg2video -g 4 -bf 2
media allPictures.mp4 mp4 -c:v libx264 -g 4 -bf 2 -pix_fmt yuv420p
chosen=64
media fromTheSecond.avi avi -c:v mpeg4 -g 4 -bf 2 -reserve_index_space 1024
chosen=0
frames=3
beside='[out0];sine=sample_rate=8000:duration=0.3[out1]'
media sound.mp4 mp4 -c:v mpeg4 -c:a aac -b:a 8k
media longerSound.avi avi -c:v mpeg4 -c:a adpcm_ima_wav -reserve_index_space 1024
beside=
media twoVideos.mkv matroska -map 0 -map 0 -c:v libx264 -pix_fmt yuv420p
media turned.mov mov -c:v mpeg4 -metadata:s:v rotate=90 -aspect 16:9
media highDynamicRange.mkv matroska -c:v libx265 \
  -x265-params "$x265:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc" -pix_fmt yuv420p10
media fullRange.mkv matroska -c:v mjpeg -pix_fmt yuvj420p
media oddSides.mkv matroska -c:v ffv1 -vf scale=17:9 -pix_fmt rgb24

# Damage.
frames=12
media whole.ts mpegts -c:v mpeg2video -g 6
bytes whole.ts 0 564 > start && bytes whole.ts 940 4000 > end && keep lostPackets.ts start end
bytes whole.ts 2820 4000 > end && keep withoutItsStart.ts end
bytes whole.ts 0 4000 > start && keep joined.ts start start
bytes allPictures.mp4 0 2500 > start && keep cut.mp4 start
bytes indexAhead.mp4 0 2000 > start && keep cutBehindItsIndex.mp4 start
bytes h264.mkv 0 1500 > start && keep cut.mkv start
bytes fromTheSecond.avi 0 5000 > start && keep cut.avi start
bytes eightBits.y4m 0 1500 > start && keep cut.y4m start
bytes jpeg.jpg 0 700 > start && keep cut.jpg start
bytes h264.h264 900 4000 > end && keep withoutItsStart.h264 end
bytes mpeg2.m2v 0 9000 > start
size=48x32
media larger.m2v mpeg2video -c:v mpeg2video
bytes larger.m2v 0 9000 > end && keep sizeChange.m2v start end
: > start && keep nothing start
echo 'These are words, and not a video.' > start && keep words.txt start
printf '#EXTM3U\n#EXTINF:1,\nvideo.ts\n#EXT-X-ENDLIST\n' > start && keep playlist.m3u8 start
rm -f start end encoded
