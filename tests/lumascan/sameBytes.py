#!/usr/bin/env python3
"""A damaged video gives the same results, byte for byte, however many threads decode and measure it.

usage: sameBytes.py BUILD_FOLDER [--full]

Ten damaged clips, each scanned with -j 1, 2 and 4; with --full all of them, three times each. All files are
compared but run.json, which holds times.
"""

import itertools
import os
import pathlib
import random
import subprocess
import sys
import tempfile

SOURCE = ["-f", "lavfi", "-i", "testsrc2=size=320x240:rate=25:duration=2,format=yuv420p"]
CODECS = {
    "h264.mp4": ["-c:v", "libx264", "-g", "20", "-bf", "2"],
    "h264.ts": ["-c:v", "libx264", "-g", "20", "-bf", "2"],
    "hevc.mkv": ["-c:v", "libx265", "-preset", "fast", "-x265-params", "log-level=none:keyint=20"],
    "hevc.ts": ["-c:v", "libx265", "-preset", "fast", "-x265-params", "log-level=none:keyint=20"],
    "mpeg2.ts": ["-c:v", "mpeg2video", "-b:v", "2M", "-bf", "2"],
    "mpeg4.avi": ["-c:v", "mpeg4", "-b:v", "2M", "-bf", "2"],
    "vp8.webm": ["-c:v", "libvpx", "-b:v", "1M", "-deadline", "realtime", "-cpu-used", "8"],
    "vp9.webm": ["-c:v", "libvpx-vp9", "-b:v", "1M", "-deadline", "realtime", "-cpu-used", "8"],
    "av1.mkv": ["-c:v", "libsvtav1", "-preset", "12", "-b:v", "1M"],
    "theora.ogv": ["-c:v", "libtheora", "-b:v", "2M"],
    "ffv1.mkv": ["-c:v", "ffv1", "-level", "3", "-slices", "4"],
    "mjpeg.avi": ["-c:v", "mjpeg"],
    "prores.mov": ["-c:v", "prores_ks"],
    "dv.avi": ["-c:v", "dvvideo", "-vf", "scale=720:576", "-pix_fmt", "yuv420p", "-frames:v", "20"],
}
PACKET = 188  # bytes of a transport stream's
KEPT = 0.1  # of a file, at its beginning and end: most containers say there what is in them


def place(data, length, choose):
    return choose.randrange(int(len(data) * KEPT), int(len(data) * (1 - KEPT)) - length)


def flipped(data, choose):
    changed = bytearray(data)
    for _ in range(40):
        changed[place(data, 1, choose)] ^= 1 << choose.randrange(8)
    return changed


def zeroed(data, choose):
    length = len(data) // 50
    start = place(data, length, choose)
    return data[:start] + bytes(length) + data[start + length:]


def shortened(data, choose):
    length = len(data) // 50
    start = place(data, length, choose)
    return data[:start] + data[start + length:]


def garbled(data, choose):
    length = len(data) // 50
    start = place(data, length, choose)
    return data[:start] + choose.randbytes(length) + data[start + length:]


def thinned(data, choose):
    packets = [data[i:i + PACKET] for i in range(0, len(data), PACKET)]
    kept = packets[:20] + [packet for packet in packets[20:] if choose.random() > 0.01]
    return b"".join(kept)


def variants():
    """Name of a clip and what to do to it; the first ten are of as many codecs."""
    damages = [flipped, zeroed, shortened, garbled]
    for turn, (number, name) in itertools.product(range(len(damages)), enumerate(CODECS)):
        yield name, damages[(number + turn) % len(damages)]
    for name in CODECS:
        if name.endswith(".ts"):
            yield name, thinned


def results(program, clip, jobs, folder):
    """The bytes of all files but run.json, by their paths."""
    run = subprocess.run([program, clip.name, "-o", folder, "-j", str(jobs), "-q", "--progress", "none"],
                         cwd=clip.parent, capture_output=True, text=True)
    if run.returncode not in (0, 3):
        sys.exit(f"sameBytes: {clip.name}: exit status {run.returncode}\n{run.stderr}")
    return {path.relative_to(folder): path.read_bytes() for path in sorted(folder.rglob("*"))
            if path.is_file() and path.name != "run.json"}


def main():
    program = pathlib.Path(sys.argv[1]).resolve() / "lumascan"
    isFull = "--full" in sys.argv
    scans = [jobs for jobs in (1, 2, 4) for _ in range(3 if isFull else 1)]
    differing = 0
    with tempfile.TemporaryDirectory() as temporary:
        work = pathlib.Path(temporary)
        chosen = list(variants()) if isFull else list(variants())[:10]
        for name in {name for name, _ in chosen}:
            subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *SOURCE, *CODECS[name], name], cwd=work,
                           env=dict(os.environ, SVT_LOG="1"), check=True)
        for number, (name, damage) in enumerate(chosen):
            clip = work / f"{number:02}-{damage.__name__}-{name}"
            clip.write_bytes(damage((work / name).read_bytes(), random.Random(number)))
            first, *others = [results(program, clip, jobs, work / f"{number}-{turn}")
                              for turn, jobs in enumerate(scans)]
            print(clip.name, len(first), "files")
            for jobs, other in zip(scans[1:], others):
                changed = [str(path) for path in first if other.get(path) != first[path]]
                if changed or other.keys() != first.keys():
                    differing += 1
                    print(f"  differ with -j {jobs}: {', '.join(changed)}")
    print(f"{len(chosen)} damaged clips, {len(scans)} scans each: {differing} scans differ from the first of their clip")
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
