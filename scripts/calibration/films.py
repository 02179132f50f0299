"""Films in memory: planes of 8 bits that are read from and written to ffmpeg."""
import subprocess

import numpy


class Film:
    """Frames of YUV 4:2:0. `y`, `u` and `v` are views into `frames`: writing to them changes the film."""

    def __init__(self, frames, size, fps):
        width, height = size
        self.frames, self.size, self.fps = frames, size, fps
        luma, chroma = width * height, width * height // 4
        self.y = frames[:, :luma].reshape(-1, height, width)
        self.u = frames[:, luma:luma + chroma].reshape(-1, height // 2, width // 2)
        self.v = frames[:, luma + chroma:].reshape(-1, height // 2, width // 2)

    def __len__(self):
        return len(self.frames)

    def planes(self):
        return (self.y, 1), (self.u, 2), (self.v, 2)


def emptyFilm(count, size, fps, luma=16):
    frames = numpy.full((count, size[0] * size[1] * 3 // 2), 128, numpy.uint8)
    film = Film(frames, size, fps)
    film.y[:] = luma
    return film


def part(film, first, last):
    """A copy of the frames `first` to `last`."""
    return Film(film.frames[first:last + 1].copy(), film.size, film.fps)


def joined(films):
    return Film(numpy.concatenate([film.frames for film in films]), films[0].size, films[0].fps)


def run(command, given=None):
    """What the command prints; its complaints are raised."""
    result = subprocess.run([str(word) for word in command], input=given, capture_output=True, check=False)
    if result.returncode != 0:
        raise RuntimeError(f'{" ".join(str(word) for word in command)}\n{result.stderr.decode()[-2000:]}')
    return result.stdout


def ffmpeg(*arguments, given=None):
    """One thread each: clips are made side by side, and encoders give the same bytes on any machine."""
    return run(['ffmpeg', *([] if given is not None else ['-nostdin']), '-v', 'error', '-y', '-threads', 1,
                '-filter_threads', 1, '-filter_complex_threads', 1, *arguments], given)


def readFilm(inputs, size, fps, count=None, filters='null'):
    """What ffmpeg makes of its inputs, scaled to `size`; frames as they come, whatever their times."""
    limit = ['-frames:v', count] if count else []
    data = ffmpeg(*inputs, '-map', '0:v:0', '-vf', f'{filters},scale={size[0]}:{size[1]}:flags=area,format=yuv420p',
                  *limit, '-fps_mode', 'passthrough', '-f', 'rawvideo', '-')
    frames = numpy.frombuffer(data, numpy.uint8).reshape(-1, size[0] * size[1] * 3 // 2)
    return Film(frames.copy(), size, fps)


def writeFilm(film, path, codec, filters='null'):
    """Codes the film, each time to the same bytes; `filters` may drop frames, the others keep their times."""
    width, height = film.size
    ffmpeg('-f', 'rawvideo', '-pix_fmt', 'yuv420p', '-s', f'{width}x{height}', '-r', film.fps, '-i', '-',
           '-vf', filters, '-fps_mode', 'passthrough', '-threads', 1, '-fflags', '+bitexact', *codec, path,
           given=film.frames.tobytes())


def recoded(film, codec, container, size=None):
    """The film after a codec, as somebody before the delivery may have used one; at another size if given."""
    width, height = film.size
    scaled = size or film.size
    coded = ffmpeg('-f', 'rawvideo', '-pix_fmt', 'yuv420p', '-s', f'{width}x{height}', '-r', film.fps, '-i', '-',
                   '-vf', f'scale={scaled[0]}:{scaled[1]}:flags=bicubic', '-threads', 1, *codec, '-f', container, '-',
                   given=film.frames.tobytes())
    data = ffmpeg('-f', container, '-i', '-', '-vf', f'scale={width}:{height}:flags=bicubic,format=yuv420p',
                  '-fps_mode', 'passthrough', '-f', 'rawvideo', '-', given=coded)
    frames = numpy.frombuffer(data, numpy.uint8).reshape(-1, width * height * 3 // 2)
    if len(frames) != len(film):
        raise RuntimeError(f'{len(film)} frames were coded by {codec}, {len(frames)} came back')
    return Film(frames.copy(), film.size, film.fps)


def photo(path, least):
    """A photograph's planes, large enough to hold a picture of `least` and not larger than needed."""
    width, height = least
    # Halved chroma needs even sizes.
    film = ffmpeg('-i', path, '-frames:v', 1, '-vf',
                  f'scale={width}:{height}:force_original_aspect_ratio=increase:flags=area,'
                  'scale=trunc(iw/2)*2:trunc(ih/2)*2,format=yuv420p', '-f', 'yuv4mpegpipe', '-')
    header, _, rest = film.partition(b'\n')
    fields = {word[:1]: word[1:] for word in header.split()[1:]}
    size = int(fields[b'W']), int(fields[b'H'])
    data = rest.partition(b'\n')[2]
    return Film(numpy.frombuffer(data, numpy.uint8).reshape(1, -1).copy(), size, 25)
