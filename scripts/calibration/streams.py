"""Damage to coded streams: lost packets of a transport stream, and frames that are missing between the others."""
import re
import subprocess

import numpy

from calibration import films

PACKET = 188
SEEN = 2.0  # mean squared error of luma from which on a frame is damaged: 45 dB, a little more than a decoder's noise
LOST = (0.001, 0.005, 0.02)  # share of the packets


def codedStream(film, codec, path):
    """A broadcast's or a camera's transport stream, with the usual key frame each half or whole second."""
    rate = int(film.size[0] * film.size[1] * film.fps * (0.5 if codec == 'mpeg2' else 0.16))
    options = (['-c:v', 'mpeg2video', '-g', 12, '-bf', 2] if codec == 'mpeg2' else
               ['-c:v', 'libx264', '-preset', 'veryfast', '-g', int(film.fps), '-bf', 2])
    films.writeFilm(film, path, [*options, '-b:v', rate, '-maxrate', rate * 3 // 2, '-bufsize', rate, '-f', 'mpegts'])


def withoutPackets(data, rng, share, begin, end):
    """A network's losses: packets go in bursts of one to fourteen (an IP packet holds seven), between two shares of
    the stream's length."""
    packets = numpy.frombuffer(data, numpy.uint8).reshape(-1, PACKET)
    count = len(packets)
    keep = numpy.ones(count, bool)
    wanted = max(2, int(share * count))
    while count - keep.sum() < wanted:
        at = int(rng.integers(max(20, int(begin * count)), int(end * count)))
        keep[at:at + int(rng.choice([1, 2, 7, 7, 14]))] = False
    return packets[keep].tobytes()


def decoded(path, size):
    """Frames as they come out of ffmpeg's decoder, with its concealment: their timestamps, and themselves."""
    command = ['ffmpeg', '-nostdin', '-hide_banner', '-v', 'info', '-copyts', '-threads', '1', '-i', str(path), '-map',
               '0:v:0', '-vf', f'scale={size[0]}:{size[1]},format=yuv420p,showinfo=checksum=0', '-fps_mode',
               'passthrough', '-f', 'rawvideo', '-']
    result = subprocess.run(command, capture_output=True, check=False)
    times = [int(time) for time in re.findall(rb'\bn: *\d+ pts: *(-?\d+)', result.stderr)]
    frames = numpy.frombuffer(result.stdout, numpy.uint8).reshape(-1, size[0] * size[1] * 3 // 2)
    if not len(frames) or len(times) != len(frames):
        raise RuntimeError(f'{path}: {len(frames)} frames, {len(times)} times')
    return times, frames


def differing(damaged, true, size):
    """Which damaged frames are not what they should be. Both: timestamps and frames."""
    luma = size[0] * size[1]
    byTime = dict(zip(*true))
    result = []
    for time, frame in zip(*damaged):
        other = byTime.get(time)
        error = numpy.inf
        if other is not None:
            error = numpy.mean((frame[:luma].astype(numpy.float32) - other[:luma]) ** 2)
        result.append(error > SEEN)
    return result


def concealed(damaged, true, film):
    """What a receiver shows: each frame at its time, the one before where none came. And which of them are wrong."""
    times, frames = damaged
    wrong = dict(zip(times, differing(damaged, true, film.size)))
    byTime = dict(zip(times, frames))
    shown, isWrong, last = [], [], frames[0]
    for time in true[0]:
        isWrong.append(bool(wrong.get(time, True)))
        last = byTime.get(time, last)
        shown.append(last)
    return films.Film(numpy.stack(shown), film.size, film.fps), isWrong


def runs(flags):
    """First and last of each run of true flags."""
    edges = numpy.flatnonzero(numpy.diff(numpy.concatenate([[0], numpy.asarray(flags, numpy.int8), [0]])))
    return [(int(a), int(b) - 1) for a, b in zip(edges[::2], edges[1::2])]


def gaps(first, last, level):
    """Frames that a writer dropped while the others kept their times: ffmpeg's filter, and, in the numbers that are
    left, the frames to either side of each gap."""
    length = (1, 3, 8)[level]
    places = [first + (last - first) * i // 3 for i in range(3)]
    dropped = '+'.join(f'between(n,{at},{at + length - 1})' for at in places)
    truth = [(at - i * length - 1, at - i * length) for i, at in enumerate(places)]
    return f"select='not({dropped})'", truth
