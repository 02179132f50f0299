#!/usr/bin/env python3
"""What a scan costs, against decoding by FFmpeg plus lumaprobe on what that decodes.

usage: scripts/scanBench.py [BUILD_FOLDER]

Makes clips, runs the three in turn, several times, and prints tables of medians: processor time, how busy a folder
of files keeps the cores, and memory against length.
"""
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 3
PICTURE = "testsrc2=size={size}:rate={rate}:duration={seconds},noise=alls=4:allf=t"
# Name, size, frames per second, seconds, how it is encoded.
CLIPS = [
    ("H.264 1280 x 720", "1280x720", 25, 60,
     ["-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p", "h264.mp4"]),
    ("MPEG-2 720 x 576", "720x576", 25, 60, ["-c:v", "mpeg2video", "-b:v", "8M", "mpeg2.ts"]),
    ("VP9 640 x 360", "640x360", 30, 60,
     ["-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-b:v", "2M", "vp9.webm"]),
]


def run(command):
    """Processor seconds, elapsed seconds and the greatest memory in MiB of any of its processes."""
    before = os.times()
    start = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    elapsed = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"scanBench.py: {command[0]} ended with {process.returncode}")
    after = os.times()
    cpu = after.children_user + after.children_system - before.children_user - before.children_system
    return cpu, elapsed, usage.ru_maxrss / 1024


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, arguments)], check=True)


def bench_cost(build):
    print("| 1 file | frames | decode | lumaprobe | sum | scan, one core | against the sum | scan, all cores | against the sum |")
    print("|---|--:|--:|--:|--:|--:|--:|--:|--:|")
    for name, size, rate, seconds, encoding in CLIPS:
        clip = encoding[-1]
        ffmpeg("-f", "lavfi", "-i", PICTURE.format(size=size, rate=rate, seconds=seconds), *encoding)
        ffmpeg("-i", clip, "-fps_mode", "passthrough", "-pix_fmt", "yuv420p", "-f", "rawvideo", "decoded.yuv")
        scan = [build / "lumascan", clip, "-q", "--force", "-o", "results"]
        commands = [
            ["ffmpeg", "-nostdin", "-v", "error", "-threads", "1", "-i", clip, "-map", "0:v:0", "-f", "null", "-"],
            [build / "lumaprobe", "decoded.yuv", *size.split("x")],
            [*scan, "-j", "1"],
            scan,
        ]
        times = [[] for _ in commands]
        for _ in range(ROUNDS):
            for command, measured in zip(commands, times):
                measured.append(run(command)[0])
        decode, probe, one, all_cores = map(statistics.median, times)
        print(f"| {name} | {rate * seconds} | {decode:.2f} s | {probe:.2f} s | {decode + probe:.2f} s "
              f"| {one:.2f} s | {one / (decode + probe):.2f} x | {all_cores:.2f} s "
              f"| {all_cores / (decode + probe):.2f} x |", flush=True)
        os.unlink("decoded.yuv")


def bench_folder(build):
    os.mkdir("folder")
    for i in range(12):
        os.link("h264.mp4", f"folder/{i}.mp4")
    cores = len(os.sched_getaffinity(0))
    print("\n| 12 files of H.264 1280 x 720 | processor time | elapsed | cores busy |")
    print("|---|--:|--:|--:|")
    cpu, elapsed, _ = run([build / "lumascan", "folder", "-q", "--force", "-o", "folder-results"])
    print(f"| {cores} at once | {cpu:.1f} s | {elapsed:.1f} s | {100 * cpu / elapsed / cores:.0f} % of {cores} |")


def bench_memory(build):
    print("\n| frames of 320 x 240 | largest process |")
    print("|--:|--:|")
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=320x240:rate=25", "-frames:v", 1000, "-c:v", "mpeg4", "short.mkv")
    for repeats in (1, 10, 100, 1000):
        ffmpeg("-stream_loop", repeats - 1, "-i", "short.mkv", "-c", "copy", "long.mkv")
        _, _, memory = run([build / "lumascan", "long.mkv", "-q", "-j", "1", "--force", "-o", "long-results"])
        print(f"| {1000 * repeats} | {memory:.0f} MiB |", flush=True)


def main():
    build = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "build/release").resolve()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    with tempfile.TemporaryDirectory(dir=os.environ.get("TMPDIR", "/var/tmp")) as folder:
        os.chdir(folder)
        bench_cost(build)
        bench_folder(build)
        bench_memory(build)
        os.chdir("/")


if __name__ == "__main__":
    main()
