"""What is wrong in a film, made to look like what the field delivers and not like what a detector looks for.

A damage is a function of (film, first, last, level, rng): it changes the frames first to last of the film in place, at
level 0 (weak), 1 (medium) or 2 (strong), and returns the damaged frames as a list of (first, last), or None where all
of them are. `DAMAGES` holds them by name.
"""
import numpy

from calibration import clean, films, shooting


def blank(film, first, last, luma):
    film.y[first:last + 1], film.u[first:last + 1], film.v[first:last + 1] = luma, 128, 128


def darkNoise(film, rng, sigma, first, last):
    """Noise on black, as analogue links and cameras under a cap give it; coarse grained a little."""
    shooting.addNoise(film, rng, numpy.full(256, sigma), first, last, chroma=0.3)


# --- black --------------------------------------------------------------------------------------------------


def blackWithLogo(film, first, last, level, rng):
    """The programme is gone while the station's logo goes on being laid over: a smaller one is stronger damage."""
    blank(film, first, last, (24, 20, 16)[level])
    height = int(film.size[1] * (0.16, 0.11, 0.07)[level]) // 2 * 2
    x = 16 if rng.random() < 0.5 else (film.size[0] - 2 * height - 16) // 2 * 2
    clean.overlay(film, clean.logo(height), x, 16, 0.8, first, last)


def blackWithClock(film, first, last, level, rng):
    """A recorder goes on counting over a camera that is gone."""
    blank(film, first, last, (22, 17, 16)[level])
    darkNoise(film, rng, (1.5, 0.8, 0.3)[level], first, last)
    small = clean.clock(film.fps, len(film), int(film.size[1] * (0.1, 0.07, 0.05)[level]) // 2 * 2)
    clean.overlay(film, small, (film.size[0] - small.size[0] - 12) // 2 * 2, 12, 1, first, last)


def blackWithNoise(film, first, last, level, rng):
    """A cap on the lens: black that is lifted and has the sensor's or the tape's noise in it."""
    blank(film, first, last, (30, 23, 17)[level])
    darkNoise(film, rng, (4, 2.2, 1)[level], first, last)


# --- freeze -------------------------------------------------------------------------------------------------


def stillFrom(film, first, level, seconds=(0.6, 1.4, 3)):
    return first, min(first + int(film.fps * seconds[level]) - 1, len(film) - 1)


def freezeWithClock(film, first, last, level, rng):
    """A player hangs while a clock that is laid over behind it runs on. The clock is there all the time."""
    first, last = stillFrom(film, first, level)
    film.frames[first:last + 1] = film.frames[first - 1]
    small = clean.clock(film.fps, len(film), film.size[1] // 14 // 2 * 2)
    clean.overlay(film, small, 12, (film.size[1] - small.size[1] - 12) // 2 * 2)
    return [(first, last)]


def freezeWithNoise(film, first, last, level, rng):
    """A frozen picture on its way through an analogue link or a codec that renews it: each frame differs a little."""
    first, last = stillFrom(film, first, level)
    film.frames[first:last + 1] = film.frames[first - 1]
    shooting.addNoise(film, rng, numpy.full(256, (1.2, 0.8, 0.5)[level]), first, last)
    return [(first, last)]


def freezeCoded(film, first, last, level, rng):
    """A frozen picture that was coded as MPEG-2 at a low rate upstream, whose key frames make it breathe."""
    first, last = stillFrom(film, first, level)
    film.frames[first:last + 1] = film.frames[first - 1]
    rate = int(film.size[0] * film.size[1] * film.fps * 0.12)
    film.frames[:] = films.recoded(film, ['-c:v', 'mpeg2video', '-b:v', rate, '-g', 12, '-bf', 2], 'mpegts').frames
    return [(first, last)]


def freezeInBursts(film, first, last, level, rng):
    """A player short of time: frames are held for some time and what came meanwhile is dropped, again and again."""
    at, held = first, []
    while at < last:
        length = int(rng.integers(*((3, 6), (6, 13), (13, 30))[level]))
        end = min(at + length - 1, last)
        film.frames[at:end + 1] = film.frames[at - 1]
        held.append((at, end))
        at = end + 1 + int(rng.integers(1, 4))
    return held


# --- bars ---------------------------------------------------------------------------------------------------


def bars(film, first, last, level, rng, axis):
    """Bars as a converter or a careless cut leaves them: not exactly black, a little noise, one wider than the other,
    an edge that is soft where the picture was scaled."""
    whole = film.size[1 - axis]
    share = (rng.uniform(0.04, 0.055), rng.uniform(0.075, 0.095), rng.uniform(0.12, 0.14))[level]
    luma = int(rng.integers(17, 31))
    sigma = rng.uniform(0.3, 1.6)
    sides = [max(2, int(whole * share + rng.integers(-1, 2))) for _ in range(2)]
    for n in range(first, last + 1):
        for plane, part in film.planes():
            picture = plane[n] if axis == 0 else plane[n].T
            a, b = (round(side / part) for side in sides)
            value = luma if part == 1 else 128
            for edge in (slice(0, a), slice(picture.shape[0] - b, None)):
                shape = picture[edge].shape
                noise = rng.standard_normal(shape, numpy.float32) * (sigma if part == 1 else 0.3)
                picture[edge] = numpy.clip(value + noise + 0.5, 1, 254)
            for row in (a, picture.shape[0] - b - 1):
                picture[row] = (picture[row].astype(numpy.int32) + value) // 2


def letterbox(film, first, last, level, rng):
    """A wide film in a narrower picture: bars above and below."""
    bars(film, first, last, level, rng, 0)


def letterboxWithLogo(film, first, last, level, rng):
    """The same with the station's logo across a bar's edge."""
    bars(film, first, last, level, rng, 0)
    height = film.size[1] // 9 // 2 * 2
    clean.overlay(film, clean.logo(height), (film.size[0] - 2 * height - 24) // 2 * 2, 6, 0.8)


def darkened(film, rng):
    light = shooting.linearLight()
    shooting.applyCurve(film, shooting.levelOf(light * 0.07), saturation=0.7)
    shooting.addNoise(film, rng, shooting.sensorGain(1.5))


def letterboxInTheDark(film, first, last, level, rng):
    """Bars in a scene that is almost as dark as they are."""
    darkened(film, rng)
    bars(film, first, last, level, rng, 0)


def pillarbox(film, first, last, level, rng):
    """A narrow film in a wide picture: bars at the sides."""
    bars(film, first, last, level, rng, 1)


def pillarboxWithLogo(film, first, last, level, rng):
    """The same with the station's logo partly over a bar."""
    bars(film, first, last, level, rng, 1)
    height = film.size[1] // 9 // 2 * 2
    clean.overlay(film, clean.logo(height), 6, 14, 0.8)


# --- combing ------------------------------------------------------------------------------------------------


def weave(film, n, upper, lower, rows=slice(None)):
    """Frame n shows the even lines of `upper` and the odd ones of `lower`; frames before the change are given."""
    for plane, a, b in zip((film.y, film.u, film.v), upper, lower):
        mixed = plane[n].copy()
        mixed[0::2], mixed[1::2] = a[0::2], b[1::2]
        height = plane.shape[1]
        start = int((rows.start or 0) * height) // 2 * 2
        stop = int((rows.stop or 1) * height) // 2 * 2
        plane[n, start:stop] = mixed[start:stop]


def frameOf(film, n):
    n = min(max(n, 0), len(film) - 1)
    return [plane[n].copy() for plane in (film.y, film.u, film.v)]


def between(film, n):
    return [((a.astype(numpy.uint16) + b + 1) // 2).astype(numpy.uint8)
            for a, b in zip(frameOf(film, n), frameOf(film, n + 1))]


def combFields(film, first, last, level, rng):
    """Interlaced video shown as frames: the second field is half a frame younger; with the fields in the wrong order
    it is a whole one away, or, of a scene of double speed, two."""
    for n in range(first, last + 1):
        second = between(film, n) if level == 0 else frameOf(film, n + level)
        weave(film, n, frameOf(film, n), second)


def combPulldown(film, first, last, level, rng):
    """Film at 24 frames made 30 by 3:2 pulldown that was never taken out, or at the wrong phase: of five frames two
    are woven from neighbours. Behind the damage the film goes on as late as it has become. Weak: half taken out by
    a mixing deinterlacer; strong: of a scene of double speed."""
    before = films.Film(film.frames.copy(), film.size, film.fps)
    late, step = 0, 2 if level == 2 else 1
    for n in range(first, len(film)):
        place = (n - first) % 5 if n <= last else 0
        late += place == 4
        at = n - late
        film.frames[n] = before.frames[at]
        if place in (2, 3):
            weave(film, n, frameOf(before, at - 1), frameOf(before, at - 1 + step))
            if level == 0:
                for plane in (film.y, film.u, film.v):
                    rows = plane[n].astype(numpy.uint16)
                    plane[n] = (2 * rows + numpy.roll(rows, 1, 0) + 1) // 3


def combPart(film, first, last, level, rng):
    """An interlaced report inside a progressive studio picture: only a part of the frame is combed."""
    share = (0.25, 0.4, 0.6)[level]
    start = rng.uniform(0, 1 - share)
    for n in range(first, last + 1):
        weave(film, n, frameOf(film, n), frameOf(film, n + 1), slice(start, start + share))


# --- slices -------------------------------------------------------------------------------------------------


def tear(film, first, last, level, rng):
    """A picture that is shown while it is still being written: below a line, which wanders, it is an older frame."""
    line = rng.uniform(0.2, 0.8) + 0.3 * shooting.wander(rng, last - first + 1, film.fps, 0.6)
    for n in range(last, first - 1, -1):
        old = frameOf(film, n - (1, 3, 8)[level])
        row = int(numpy.clip(line[n - first], 0.1, 0.9) * film.size[1]) // 2 * 2
        for (plane, part), was in zip(film.planes(), old):
            plane[n, row // part:] = was[row // part:]


def tearShifted(film, first, last, level, rng):
    """Lost synchronisation: below a line the picture sits further to the side, what leaves comes in again."""
    row = int(rng.uniform(0.25, 0.7) * film.size[1]) // 2 * 2
    for n in range(first, last + 1):
        shift = int(rng.choice([-1, 1]) * (6, 20, 70)[level] * rng.uniform(0.6, 1.4)) // 2 * 2
        for plane, part in film.planes():
            plane[n, row // part:] = numpy.roll(plane[n, row // part:], shift // part, 1)
        row = int(numpy.clip(row + rng.integers(-6, 7), 0.1 * film.size[1], 0.9 * film.size[1])) // 2 * 2


def heldLines(film, first, last, level, rng):
    """A frame store that runs dry: a run of lines repeats the last good one, at another place in each frame."""
    for n in range(first, last + 1):
        length = int(film.size[1] * (0.05, 0.12, 0.3)[level] * rng.uniform(0.7, 1.3)) // 2 * 2
        row = int(rng.integers(2, film.size[1] - length)) // 2 * 2
        for plane, part in film.planes():
            plane[n, row // part:(row + length) // part] = plane[n, row // part - 1]


def deadBands(film, first, last, level, rng):
    """Lost slices that a decoder leaves black, green or grey; some frames are spared."""
    hit = []
    for n in range(first, last + 1):
        if rng.random() < (0.5, 0.3, 0.1)[level]:
            continue
        hit.append((n, n))
        for _ in range((1, 2, 4)[level]):
            length = int(rng.choice([8, 16, 16, 24, 32]) * max(1, film.size[1] // 360))
            row = int(rng.integers(0, film.size[1] - length)) // 2 * 2
            start = int(rng.uniform(0, 0.7) * film.size[0]) // 2 * 2 if rng.random() < 0.5 else 0
            luma, colour = ((16, 128), (0, 0), (128, 128))[int(rng.integers(3))]
            film.y[n, row:row + length, start:] = luma
            film.u[n, row // 2:(row + length) // 2, start // 2:] = colour
            film.v[n, row // 2:(row + length) // 2, start // 2:] = colour
    return hit


def shiftedBands(film, first, last, level, rng):
    """A worn tape's time base: bands of lines sit to the side, each by its own distance."""
    for n in range(first, last + 1):
        for _ in range((1, 3, 6)[level]):
            length = int(film.size[1] * rng.uniform(0.02, 0.08)) // 2 * 2
            row = int(rng.integers(0, film.size[1] - length)) // 2 * 2
            shift = int(rng.choice([-1, 1]) * rng.uniform(4, (10, 24, 60)[level])) // 2 * 2
            for plane, part in film.planes():
                band = plane[n, row // part:(row + length) // part]
                band[:] = numpy.roll(band, shift // part, 1)


# --- flicker ------------------------------------------------------------------------------------------------


def lit(film, n, gain):
    """A frame in more or less light; `gain` is one number or one for each line."""
    gain = numpy.asarray(gain, numpy.float32).reshape(-1, 1)
    film.y[n] = numpy.clip(16 + (film.y[n] - 16.0) * gain ** (1 / 2.2) + 0.5, 1, 254)


def strobe(film, first, last, level, rng):
    """Lamps of a stage or a police car: the light is on and off, five to twelve times a second."""
    period = film.fps / rng.uniform(5, min(12, film.fps / 2))
    for n in range(first, last + 1):
        if (n - first) % period < period / 2:
            lit(film, n, (1.35, 2, 4)[level])


def mainsBands(film, first, last, level, rng):
    """Lamps on the mains under a rolling shutter: bands of light roll through the picture."""
    rows = numpy.arange(film.size[1]) / film.size[1]
    bands, roll, depth = rng.uniform(1, 3), rng.uniform(0.1, 0.4), (0.12, 0.3, 0.6)[level]
    for n in range(first, last + 1):
        lit(film, n, 1 + depth * numpy.sin(2 * numpy.pi * (bands * rows + roll * n)))


def projector(film, first, last, level, rng):
    """An old film: each frame was exposed and fades as it likes."""
    for n in range(first, last + 1):
        lit(film, n, numpy.clip(1 + (0.08, 0.2, 0.4)[level] * rng.standard_normal(), 0.1, 3))


def gainPumping(film, first, last, level, rng):
    """A camera's automatic gain that hunts, three to twelve times a second."""
    rate, depth = rng.uniform(3, min(12, film.fps / 2.2)), (0.12, 0.3, 0.6)[level]
    for n in range(first, last + 1):
        lit(film, n, 1 + depth * numpy.sin(2 * numpy.pi * rate * (n - first) / film.fps))


# --- exposure and contrast ----------------------------------------------------------------------------------


def overExposure(film, first, last, level, rng):
    """Too much light on a sensor: gain in linear light, a soft shoulder, then white."""
    light = shooting.linearLight() * (2, 3.5, 7)[level]
    light = numpy.where(light > 0.7, 0.7 + 0.35 * (1 - numpy.exp(-(light - 0.7) / 0.35)), light)
    shooting.applyCurve(film, numpy.minimum(shooting.levelOf(light), 236), first, last, (0.95, 0.8, 0.6)[level])


def underExposure(film, first, last, level, rng):
    """Too little light: linear gain, and the noise that is left when a sensor sees little."""
    shooting.applyCurve(film, shooting.levelOf(shooting.linearLight() * (0.3, 0.12, 0.04)[level]), first, last,
                        (0.9, 0.7, 0.5)[level])
    shooting.addNoise(film, rng, shooting.sensorGain((0.8, 1.2, 1.5)[level]), first, last)


def haze(film, first, last, level, rng):
    """Mist or a dirty window: light of its own is mixed in, more of it above, where things are far away."""
    air, clear = rng.uniform(170, 215), (0.6, 0.35, 0.18)[level]
    rows = numpy.linspace(clear * 0.75, min(clear * 1.25, 1), film.size[1], dtype=numpy.float32)[:, None]
    for n in range(first, last + 1):
        film.y[n] = air + (film.y[n] - air) * rows + 0.5
        for plane in (film.u, film.v):
            plane[n] = 128 + (plane[n] - 128.0) * rows[::2][:plane.shape[1]] + 0.5


# --- blocks and blur ----------------------------------------------------------------------------------------


def upstream(film, first, last, codec, container, size=None):
    film.frames[first:last + 1] = films.recoded(films.part(film, first, last), codec, container, size).frames


def blocksOfMpeg2(film, first, last, level, rng):
    """A contribution link of too low a rate."""
    upstream(film, first, last, ['-c:v', 'mpeg2video', '-qmin', 2, '-q:v', (10, 18, 31)[level], '-g', 15, '-bf', 2],
             'mpegts')


def blocksOfX264(film, first, last, level, rng):
    """H.264 of a low rate by an encoder that has its deblocking off, as small cameras have."""
    upstream(film, first, last, ['-c:v', 'libx264', '-preset', 'veryfast', '-crf', (33, 38, 44)[level], '-x264-params',
                                 'no-deblock=1'], 'h264')


def blocksUpscaled(film, first, last, level, rng):
    """A small video from the web in a large programme: its blocks are no longer of 8 or 16 samples."""
    width, height = (int(side * (0.75, 0.6, 0.45)[level]) // 2 * 2 for side in film.size)
    upstream(film, first, last, ['-c:v', 'mpeg4', '-q:v', (8, 14, 22)[level], '-g', 25], 'avi', (width, height))


def filtered(film, first, last, kernel):
    """Convolved with a kernel of odd sides, by Fourier transform; the border is repeated."""
    for plane, part in film.planes():
        reach = numpy.array(kernel.shape) // 2
        own = kernel if part == 1 else kernel[reach[0] % 2::2, reach[1] % 2::2]
        own = own / own.sum()
        up, left = own.shape[0] // 2, own.shape[1] // 2
        height, width = plane.shape[1:]
        shape = height + 2 * up, width + 2 * left
        spectrum = numpy.fft.rfft2(own, shape)
        for n in range(first, last + 1):
            wide = numpy.pad(plane[n], ((up, up), (left, left)), 'edge')
            spread = numpy.fft.irfft2(numpy.fft.rfft2(wide) * spectrum, shape)[2 * up:, 2 * left:]
            plane[n] = numpy.clip(spread + 0.5, 0, 255)


def grid(reach):
    side = numpy.arange(-reach, reach + 1, dtype=numpy.float32)
    return side[:, None], side[None, :]


def scaleOf(film):
    """Blur is as wide as it looks: in proportion to the picture."""
    return film.size[0] / 640


def gaussianBlur(film, first, last, level, rng):
    """A dirty or misted lens, a soft scaler."""
    sigma = (1.2, 2.2, 4)[level] * scaleOf(film)
    y, x = grid(int(3 * sigma) + 1)
    filtered(film, first, last, numpy.exp(-(x * x + y * y) / (2 * sigma * sigma)))
    shooting.addNoise(film, rng, shooting.sensorGain(0.6), first, last)


def defocus(film, first, last, level, rng):
    """A lens out of focus: every point becomes a disc. The sensor's noise stays sharp."""
    radius = (1.8, 3.5, 7)[level] * scaleOf(film)
    y, x = grid(int(radius) + 2)
    filtered(film, first, last, numpy.clip(radius + 0.5 - numpy.hypot(x, y), 0, 1))
    shooting.addNoise(film, rng, shooting.sensorGain(0.6), first, last)


def motionBlur(film, first, last, level, rng):
    """A long exposure in a moving hand: points become strokes of one direction."""
    length, angle = (6, 12, 24)[level] * scaleOf(film), rng.uniform(0, numpy.pi)
    y, x = grid(int(length / 2) + 2)
    along, across = x * numpy.cos(angle) + y * numpy.sin(angle), y * numpy.cos(angle) - x * numpy.sin(angle)
    kernel = numpy.clip(1 - numpy.abs(across), 0, 1) * numpy.clip(length / 2 + 0.5 - numpy.abs(along), 0, 1)
    filtered(film, first, last, kernel)
    shooting.addNoise(film, rng, shooting.sensorGain(0.6), first, last)


def upscaled(film, first, last, level, rng):
    """A source of a half, a third or a quarter of the size in each direction, scaled up."""
    width, height = film.size
    small = [max(16, int(side / (2, 3, 4.5)[level]) // 2 * 2) for side in film.size]
    scales = f'scale={small[0]}:{small[1]}:flags=area,scale={width}:{height}:flags=bicubic'
    piece = films.part(film, first, last)
    data = films.ffmpeg('-f', 'rawvideo', '-pix_fmt', 'yuv420p', '-s', f'{width}x{height}', '-i', '-', '-vf',
                        scales, '-f', 'rawvideo', '-', given=piece.frames.tobytes())
    film.frames[first:last + 1] = numpy.frombuffer(data, numpy.uint8).reshape(-1, film.frames.shape[1])


# --- noise --------------------------------------------------------------------------------------------------


def sensorNoise(film, first, last, level, rng):
    """A sensor at its highest gain."""
    shooting.addNoise(film, rng, shooting.sensorGain((4, 8, 16)[level]), first, last, spread=1)


def filmGrain(film, first, last, level, rng):
    """Film of high speed, scanned: coarse grain."""
    shooting.addNoise(film, rng, shooting.grainGain((6, 11, 20)[level]), first, last, spread=1, chroma=0.3)


def saltAndPepper(film, first, last, level, rng):
    """Bit errors on a line without correction, a sensor's defective samples."""
    share = (0.001, 0.006, 0.03)[level]
    for n in range(first, last + 1):
        count = rng.poisson(share * film.y[n].size)
        at = rng.integers(0, film.y[n].size, count)
        film.y[n].reshape(-1)[at] = rng.choice([20, 235], count)


def analogueNoise(film, first, last, level, rng):
    """A weak aerial: noise that is drawn out along the lines, some lines more than others, and a trembling edge."""
    sigma = (5, 10, 20)[level]
    height, width = film.y.shape[1:]
    field = rng.standard_normal((height + 64, width + 64), numpy.float32)
    field = (field + 1.4 * numpy.roll(field, 1, 1) + numpy.roll(field, 2, 1)) / 2.2
    for n in range(first, last + 1):
        top, left = rng.integers(0, 64, 2)
        lines = numpy.clip(rng.normal(1, 0.3, (height, 1)), 0.3, 3)
        noise = field[top:top + height, left:left + width] * lines * sigma
        film.y[n] = numpy.clip(film.y[n] + noise * (-1 if rng.random() < 0.5 else 1) + 0.5, 1, 254)


# --- time ---------------------------------------------------------------------------------------------------


def doubledFrames(film, first, last, level, rng):
    """A wrong rate of frames made right by showing some twice: every twelfth, fifth or second one."""
    step = (12, 5, 2)[level]
    before = film.frames.copy()
    late, doubled = 0, []
    for n in range(first, len(film)):
        if n <= last and (n - first) % step == step - 1:
            late += 1
            doubled.append((n, n))
        film.frames[n] = before[n - late]
    return doubled


def jumps(film, first, last, level, rng):
    """Frames were lost before the file was written, and nothing in it says so: the film jumps."""
    gap = (2, 5, 12)[level]
    middle = (first + last) // 2
    film.frames[middle:len(film) - gap] = film.frames[middle + gap:].copy()
    film.frames[len(film) - gap:] = film.frames[len(film) - gap - 1]
    for plane in (film.y, film.u, film.v):  # the film's end must not stand still: it runs backwards
        for i in range(gap):
            plane[len(film) - gap + i] = plane[len(film) - gap - 2 - i]
    return [(middle, middle)]


# Name: function. packets.py has those that are done to coded streams.
DAMAGES = {function.__name__: function for function in (
    blackWithLogo, blackWithClock, blackWithNoise, freezeWithClock, freezeWithNoise, freezeCoded, freezeInBursts,
    letterbox, letterboxWithLogo, letterboxInTheDark, pillarbox, pillarboxWithLogo, combFields, combPulldown, combPart,
    tear, tearShifted, heldLines, deadBands, shiftedBands, strobe, mainsBands, projector, gainPumping, overExposure,
    underExposure, haze, blocksOfMpeg2, blocksOfX264, blocksUpscaled, gaussianBlur, defocus, motionBlur, upscaled,
    sensorNoise, filmGrain, saltAndPepper, analogueNoise, doubledFrames, jumps)}
