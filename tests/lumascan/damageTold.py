#!/usr/bin/env python3
"""Of damaged videos lumascan says that they are damaged, of healthy ones it does not.

usage: damageTold.py BUILD_FOLDER [--full] [--keep FOLDER]
  --full         all variants of all clips (over 1,500) instead of some
  --keep FOLDER  leaves clips, variants and results there

What is true comes from elsewhere: the hashes of the frames that ffmpeg decodes, of the undamaged clip and of the
variant, and what it writes to standard error meanwhile. Told is what keeps a result from "complete",
and every event about the file instead of the picture.

Fails when ffmpeg prints an error of which lumascan says nothing, when lumascan accuses a healthy clip, or when it
says nothing of lost frames. Changes of which neither says anything are counted and named.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import zlib

SOURCE = ["-f", "lavfi", "-i", "testsrc2=size=192x144:rate=25:duration=2"]
H264 = "-c:v libx264 -preset veryfast -g 20 -bf 2 -pix_fmt yuv420p"
HEVC = "-c:v libx265 -preset ultrafast -pix_fmt yuv420p -x265-params log-level=none:keyint=20"
MPEG2 = "-c:v mpeg2video -b:v 1M -bf 2 -g 12"
MPEG4 = "-c:v mpeg4 -b:v 1M -bf 2 -g 20"
VP8 = "-c:v libvpx -b:v 500k -deadline realtime -cpu-used 8 -g 20"
VP9 = "-c:v libvpx-vp9 -b:v 500k -deadline realtime -cpu-used 8 -g 20"
AV1 = "-c:v libsvtav1 -preset 12 -g 20 -b:v 500k -pix_fmt yuv420p"
SOUND = "-f lavfi -i sine=duration=2"
CLIPS = {
    "h264.mp4": H264,
    "h264fast.mp4": f"{H264} -movflags faststart",
    "h264parts.mp4": f"{H264} -movflags frag_keyframe+empty_moov",
    "h264.mov": H264,
    "h264.mkv": H264,
    "h264.ts": H264,
    "h264.flv": H264,
    "h264.avi": H264.replace("-bf 2", "-bf 0"),
    "h264.h264": H264,
    "h264.mxf": "-c:v libx264 -preset veryfast -g 20 -bf 0 -pix_fmt yuv420p",
    "sound.mp4": f"{SOUND} {H264} -c:a aac",
    "sound.ts": f"{SOUND} {MPEG2} -c:a mp2",
    "hevc.mp4": HEVC,
    "hevc.mkv": HEVC,
    "hevc.ts": HEVC,
    "hevc.hevc": HEVC,
    "hevcHash.mkv": f"{HEVC}:hash=1",
    "mpeg2.ts": MPEG2,
    "mpeg2.mpg": MPEG2,
    "mpeg2.vob": MPEG2,
    "mpeg2.mkv": MPEG2,
    "mpeg2.m2v": MPEG2,
    "mpeg2.mxf": "-c:v mpeg2video -b:v 1M -g 12",
    "mpeg1.mpg": "-c:v mpeg1video -b:v 1M -g 12",
    "mpeg4.avi": MPEG4,
    "mpeg4.mp4": MPEG4,
    "mpeg4.mkv": MPEG4,
    "xvid.avi": "-c:v libxvid -b:v 1M -g 20",
    "h263.3gp": "-c:v h263 -vf scale=176:144 -b:v 500k",
    "msmpeg4.avi": "-c:v msmpeg4v2 -b:v 1M",
    "wmv1.wmv": "-c:v wmv1 -b:v 1M",
    "wmv2.asf": "-c:v wmv2 -b:v 1M",
    "flv1.flv": "-c:v flv1 -b:v 1M",
    "vp8.webm": VP8,
    "vp8.ivf": VP8,
    "vp9.webm": VP9,
    "vp9.mp4": VP9,
    "vp9.ivf": VP9,
    "av1.mp4": AV1,
    "av1.mkv": AV1,
    "av1.obu": AV1,
    "theora.ogv": "-c:v libtheora -b:v 500k -g 20",
    "ffv1.mkv": "-c:v ffv1 -level 3 -slices 4 -pix_fmt yuv420p",
    "ffv1.avi": "-c:v ffv1 -level 3 -slicecrc 1 -pix_fmt yuv420p",
    "ffv1.nut": "-c:v ffv1 -level 3 -pix_fmt yuv420p",
    "huffyuv.avi": "-c:v huffyuv",
    "utvideo.mkv": "-c:v utvideo -pix_fmt yuv420p",
    "mjpeg.avi": "-c:v mjpeg -pix_fmt yuvj420p",
    "mjpeg.mov": "-c:v mjpeg -pix_fmt yuvj420p",
    "mjpeg.mjpeg": "-c:v mjpeg -pix_fmt yuvj420p -f mjpeg",
    "jpeg2000.mxf": "-c:v jpeg2000 -pix_fmt yuv420p",
    "prores.mov": "-c:v prores_ks",
    "dnxhr.mov": "-c:v dnxhd -profile:v dnxhr_lb -vf scale=256:144 -pix_fmt yuv422p",
    "cineform.mov": "-c:v cfhd -pix_fmt yuv422p10le -vf scale=256:144",
    "dv.dv": "-c:v dvvideo -vf scale=720:576 -pix_fmt yuv420p -frames:v 12",
    "dv.avi": "-c:v dvvideo -vf scale=720:576 -pix_fmt yuv420p -frames:v 12",
    "png.mov": "-c:v png -pix_fmt rgb24",
    "qtrle.mov": "-c:v qtrle",
    "svq1.mov": "-c:v svq1",
    "cinepak.avi": "-c:v cinepak -frames:v 20",
    "snow.avi": "-c:v snow -strict -2 -vstrict -2 -pix_fmt yuv420p",
    "vc2.mkv": "-c:v vc2 -pix_fmt yuv420p",
    "rv20.rm": "-c:v rv20 -b:v 1M",
    "roq.roq": "-c:v roqvideo -vf scale=128:128,fps=30 -t 1",
    "gif.gif": "",
    "raw.y4m": "-pix_fmt yuv420p -frames:v 20",
    "raw.avi": "-c:v rawvideo -pix_fmt yuv420p -frames:v 20",
    "raw.nut": "-c:v rawvideo -pix_fmt yuv420p -frames:v 20",
}
# Copies as an editor or a recorder makes them: cut between key frames, joined to another container.
COPIES = {
    "h264.mp4": ["copy.mp4", "copy.mkv", "copy.ts", "copy.mov"],
    "h264.ts": ["copy.mp4", "copy.ts"],
    "hevc.mkv": ["copy.mp4", "copy.mkv", "copy.ts"],
    "mpeg2.ts": ["copy.mkv", "copy.ts", "copy.mpg"],
    "mpeg4.avi": ["copy.avi"],
    "vp9.webm": ["copy.webm"],
    "mjpeg.avi": ["copy.avi"],
}
PACKET = 188  # bytes of a transport stream's
KEPT = 0.08  # of a file, at its beginning: without its headers it is no video, and fails
CUTS = 24
ONE_OF = 8  # variants is looked at without --full
# Streams without a container: nothing says that pictures are missing.
BARE = (".h264", ".hevc", ".mjpeg")
LEAST_TOLD = 0.98  # of the variants of others with fewer frames
# Events about the file, not the picture.
TELLING = {"decode_error", "stream_error", "starts_midstream", "truncation", "size_change", "timestamp_gap",
           "missing_frames"}
# Of those, what an intact recording may say of its beginning.
HARMLESS = {"starts_midstream"}
# Lines of ffmpeg that are not about what it reads.
OF_THE_OUTPUT = re.compile(r"^\[(framemd5|null|auto_scale\w*|swscaler|graph|out#|sws)")


@dataclasses.dataclass
class Variant:
    name: str
    clip: str
    damage: str  # "" of what is healthy
    path: pathlib.Path
    frames: list = dataclasses.field(default_factory=list)  # ffmpeg's hashes
    errors: list = dataclasses.field(default_factory=list)  # ffmpeg's lines
    told: list = dataclasses.field(default_factory=list)  # lumascan's words


def place(data, length, choose):
    return choose.randrange(int(len(data) * KEPT), len(data) - length)


def flipped(data, choose, count):
    changed = bytearray(data)
    for _ in range(count):
        changed[place(data, 1, choose)] ^= 1 << choose.randrange(8)
    return changed


def zeroed(data, choose, share):
    length = max(1, int(len(data) * share))
    start = place(data, length, choose)
    return data[:start] + bytes(length) + data[start + length:]


def removed(data, choose, share):
    length = max(1, int(len(data) * share))
    start = place(data, length, choose)
    return data[:start] + data[start + length:]


def garbled(data, choose, share):
    length = max(1, int(len(data) * share))
    start = place(data, length, choose)
    return data[:start] + choose.randbytes(length) + data[start + length:]


def thinned(data, choose, share):
    packets = [data[i:i + PACKET] for i in range(0, len(data), PACKET)]
    return b"".join(packet for i, packet in enumerate(packets) if i < 12 or choose.random() >= share)


def cut(data, _, share):
    return data[:int(len(data) * share)]


def damages(clip):
    """Name, function and measure of everything that is done to a clip."""
    yield from ((f"flips{count}-{turn}", flipped, count) for count in (1, 8, 40) for turn in range(3))
    yield from ((f"zeros{share}", zeroed, share) for share in (0.002, 0.02, 0.1))
    yield from ((f"garbage{share}", garbled, share) for share in (0.002, 0.02))
    yield from ((f"removed{share}", removed, share) for share in (0.01, 0.1, 0.3))
    yield from ((f"cut{i:02}", cut, i / (CUTS + 1)) for i in range(1, CUTS + 1))
    if clip.endswith(".ts"):
        yield from ((f"lost{share}-{turn}", thinned, share) for share in (0.005, 0.06) for turn in range(3))


def ffmpeg(*arguments, **options):
    return subprocess.run(["ffmpeg", "-nostdin", "-y", "-v", "error", *arguments], capture_output=True, text=True,
                          errors="replace", check=False, env=dict(os.environ, SVT_LOG="1"), **options)


def make(work, name):
    made = ffmpeg(*SOURCE, *CLIPS[name].split(), str(work / name))
    if made.returncode != 0:
        sys.exit(f"damageTold: {name} cannot be made\n{made.stderr}")


def look(variant):
    """What ffmpeg decodes, and what it says meanwhile."""
    run = ffmpeg("-err_detect", "crccheck", "-threads", "1", "-i", str(variant.path), "-map", "0:v:0",
                 "-fps_mode", "passthrough", "-f", "framemd5", "-")
    variant.frames = [line.split(",")[-1].strip() for line in run.stdout.splitlines() if line[:1].isdigit()]
    variant.errors = [line for line in run.stderr.splitlines() if line.strip() and not OF_THE_OUTPUT.match(line)]


def clipsAndVariants(work, isFull):
    """Healthy clips, and damaged ones."""
    names = list(CLIPS)
    chosen = names if isFull else names[::3]
    for name in chosen:
        make(work, name)
        yield Variant(name, name, "", work / name)
        for turn, copy in enumerate(COPIES.get(name, []) if isFull else COPIES.get(name, [])[:1]):
            path = work / f"{name}.{turn}.{copy}"
            made = ffmpeg("-ss", "0.9", "-i", str(work / name), "-c", "copy", str(path))
            if made.returncode != 0:
                sys.exit(f"damageTold: {path.name} cannot be made\n{made.stderr}")
            yield Variant(path.name, name, "", path)
        data = (work / name).read_bytes()
        if name.endswith(".ts"):
            packets = len(data) // PACKET
            path = work / f"late.{name}"
            path.write_bytes(data[packets // 3 * PACKET:])
            yield Variant(path.name, name, "", path)
        for damage, change, measure in damages(name):
            if not isFull and zlib.crc32(f"{name} {damage}".encode()) % ONE_OF != 0:
                continue
            path = work / f"{damage}.{name}"
            path.write_bytes(change(data, random.Random(f"{name} {damage}"), measure))
            yield Variant(path.name, name, damage, path)


def scan(program, folder, results):
    run = subprocess.run([program, folder, "-o", results, "-q", "--progress", "none", "--formats", "json"],
                         capture_output=True, text=True, check=False)
    if run.returncode not in (0, 1, 3):
        sys.exit(f"damageTold: exit status {run.returncode}\n{run.stderr}")
    told = {}
    for path in results.rglob("result.json"):
        result = json.loads(path.read_text(encoding="utf-8"))
        words = [] if result["status"] == "complete" else [result["status"]]
        words += sorted({event["type"] for event in result["events"]} & TELLING)
        told[pathlib.Path(result["input"]["path"]).name] = words
    return told


def unlike(variant, whole):
    """What ffmpeg says of a variant, and not of the clip, without names and addresses."""
    known = {re.sub(r"@ 0x\w+|\S*/\S*", "", line) for line in whole.errors}
    return [line for line in variant.errors if re.sub(r"@ 0x\w+|\S*/\S*", "", line) not in known]


def isHarmless(words):
    return set(words) <= HARMLESS


def report(variants):
    healthy = [variant for variant in variants if not variant.damage]
    damaged = [variant for variant in variants if variant.damage]
    clips = {variant.name: variant for variant in healthy}
    rows = collections.defaultdict(collections.Counter)
    lost = collections.Counter()
    for variant in damaged:
        whole = clips[variant.clip]
        errors = unlike(variant, whole)
        isChanged = variant.frames != whole.frames
        isTold = not isHarmless(variant.told)
        row = rows[re.match("[a-z]+", variant.damage)[0]]
        row["variants"] += 1
        row["changed"] += isChanged
        row["told"] += isChanged and isTold
        row["ffmpeg alone"] += bool(errors) and not isTold
        row["fewer"] += isChanged and not isTold and len(variant.frames) < len(whole.frames)
        row["untold"] += isChanged and not isTold
        if len(variant.frames) < len(whole.frames) and not variant.clip.endswith(BARE):
            lost[isTold] += 1
        row["needless"] += not isChanged and not errors and isTold
        if errors and not isTold:
            print(f"{variant.name}: told by ffmpeg alone: {errors[0]}")
        elif isChanged and not isTold:
            print(f"{variant.name}: untold: {len(variant.frames)} of {len(whole.frames)} frames")
    total = collections.Counter()
    columns = ["variants", "changed", "told", "ffmpeg alone", "untold", "fewer"]
    print("\n| damage | variants | pictures changed | of these told | by ffmpeg alone | untold | of these fewer |")
    print("|---|" + "--:|" * len(columns))
    for name, row in [*sorted(rows.items()), ("all", total)]:
        print(f"| {name} | " + " | ".join(str(row[column]) for column in columns) + " |")
        total.update(row)
    accused = [variant for variant in healthy if not isHarmless(variant.told)]
    for variant in accused:
        print(f"{variant.name}: healthy, accused of {', '.join(variant.told)}")
    print(f"\n{len(healthy)} healthy clips, {len(accused)} accused; {total['needless']} variants accused whose"
          " pictures are the same")
    print(f"{lost[True]} of {lost[True] + lost[False]} variants of containers that lost frames are told")
    isEnough = lost[True] >= LEAST_TOLD * (lost[True] + lost[False]) > 0
    return total["ffmpeg alone"] > 0 or len(accused) > 0 or not isEnough


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("build", type=pathlib.Path)
    options.add_argument("--full", action="store_true")
    options.add_argument("--keep", type=pathlib.Path)
    options = options.parse_args()
    with tempfile.TemporaryDirectory() as temporary:
        work = options.keep or pathlib.Path(temporary)
        clips = work / "clips"
        clips.mkdir(parents=True)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            variants = []
            for variant in clipsAndVariants(clips, options.full):
                pool.submit(look, variant)
                variants.append(variant)
        told = scan(options.build.resolve() / "lumascan", clips, work / "results")
        for variant in variants:
            variant.told = told.get(variant.name, ["nothing"])
        return int(report(variants))


if __name__ == "__main__":
    sys.exit(main())
