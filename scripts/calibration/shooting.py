"""What a camera does to a scene: it moves in a hand, and its sensor or film adds noise."""
import numpy

NOISE_TILE = 96  # by how much a field of noise is larger than the picture that is cut out of it at random


def wander(rng, count, fps, seconds):
    """A smooth random walk, most of it between -1 and 1, that changes its mind about every `seconds`."""
    spectrum = numpy.fft.rfft(rng.standard_normal(count + 4 * int(seconds * fps) + 8))
    frequency = numpy.fft.rfftfreq(2 * (len(spectrum) - 1), 1 / fps)
    walk = numpy.fft.irfft(spectrum * numpy.exp(-0.5 * (frequency * seconds * 2.5) ** 2))[:count]
    walk -= walk.mean()
    return walk / (2 * walk.std() + 1e-9)


def sampled(plane, x0, y0, angle, zoom, size):
    """A picture of `size` out of a plane, its middle at x0, y0, turned and zoomed; between samples linearly."""
    width, height = size
    xs = (numpy.arange(width, dtype=numpy.float32) - width / 2) / zoom
    ys = (numpy.arange(height, dtype=numpy.float32)[:, None] - height / 2) / zoom
    sine, cosine = numpy.float32(numpy.sin(angle)), numpy.float32(numpy.cos(angle))
    x = numpy.clip(numpy.float32(x0) + cosine * xs - sine * ys, 0, plane.shape[1] - 1.01)
    y = numpy.clip(numpy.float32(y0) + sine * xs + cosine * ys, 0, plane.shape[0] - 1.01)
    column, row = x.astype(numpy.int32), y.astype(numpy.int32)
    x -= column
    y -= row
    at = row * plane.shape[1] + column
    flat = plane.reshape(-1)
    above = flat[at] * (1 - x) + flat[at + 1] * x
    at += plane.shape[1]
    return above * (1 - y) + (flat[at] * (1 - x) + flat[at + 1] * x) * y


def handHeld(scene, film, rng, speed, shutter=1):
    """Fills the film with a hand-held move over a photograph. `speed`: samples a second, about; `shutter`: pictures
    within half a frame's time that are averaged, as light is while the shutter is open."""
    count, fps = len(film), film.fps
    width, height = film.size
    sceneWidth, sceneHeight = scene.size
    room = numpy.array([sceneWidth - width, sceneHeight - height]) / 2
    seconds = numpy.clip(2 * room.mean() / speed, 0.5, 6)
    reach = numpy.minimum(room * 0.8, speed * seconds / 2)
    shake = rng.uniform(0.6, 2.0)  # samples: of a hand that means to be still
    x = reach[0] * wander(rng, count, fps, seconds) + shake * wander(rng, count, fps, 0.25)
    y = reach[1] * wander(rng, count, fps, seconds * 1.3) + shake * wander(rng, count, fps, 0.25)
    angle = numpy.radians(rng.uniform(0.2, 1.0)) * wander(rng, count, fps, 1.5)
    zoom = 1.03 + 0.03 * wander(rng, count, fps, 3)
    still = numpy.arange(count)
    planes = [(plane[0].astype(numpy.float32), part) for plane, part in scene.planes()]
    for n in range(count):
        for (plane, part), (out, _) in zip(planes, film.planes()):
            total = 0
            for i in range(shutter):
                at = n + 0.5 * i / shutter
                cx, cy, turn, scale = (numpy.interp(at, still, walk) for walk in (x, y, angle, zoom))
                total = total + sampled(plane, (sceneWidth / 2 + cx) / part, (sceneHeight / 2 + cy) / part, turn, scale,
                                        (width // part, height // part))
            out[n] = total / shutter + 0.5


def blurredRows(field, times):
    """[1 2 1] along both axes, so many times: what a demosaicing or a scan does to noise."""
    for _ in range(times):
        field = (field + (numpy.roll(field, 1, 0) + numpy.roll(field, -1, 0)) / 2) / 2
        field = (field + (numpy.roll(field, 1, 1) + numpy.roll(field, -1, 1)) / 2) / 2
    return field / field.std()


def addNoise(film, rng, gain, first=0, last=None, spread=1, chroma=0.5):
    """Noise of its own in each frame. `gain`: its standard deviation for each of the 256 levels of luma; `spread`: how
    far it reaches."""
    last = len(film) - 1 if last is None else last
    fields = {}
    for plane, part in film.planes():
        if plane.shape not in fields:
            shape = plane.shape[1] + NOISE_TILE, plane.shape[2] + NOISE_TILE
            fields[plane.shape] = blurredRows(rng.standard_normal(shape, numpy.float32), spread)
    table = numpy.asarray(gain, numpy.float32)
    for n in range(first, last + 1):
        strength = table[film.y[n]]
        for plane, part in film.planes():
            field = fields[plane.shape]
            top, left = rng.integers(0, NOISE_TILE, 2)
            cut = field[top:top + plane.shape[1], left:left + plane.shape[2]] * (-1 if rng.random() < 0.5 else 1)
            own = strength if part == 1 else strength[::2, ::2] * chroma
            plane[n] = numpy.clip(plane[n] + cut * own + 0.5, 0, 255)


def sensorGain(sigma):
    """Of a sensor: what is even in linear light is lifted by the curve of the dark, most just above black."""
    level = numpy.arange(256)
    return sigma * (0.35 + 0.9 * numpy.exp(-level / 70)) * numpy.clip(level / 24, 0.3, 1)


def grainGain(sigma):
    """Of film: in the middle of the scale, little in black and white."""
    level = numpy.arange(256)
    return sigma * (0.3 + 0.7 * numpy.sin(numpy.pi * numpy.clip((level - 16) / 219, 0, 1)))


def linearLight():
    """For each level of luma what light made it, 0 to 1."""
    return (numpy.clip((numpy.arange(256) - 16) / 219, 0, 1)) ** 2.2


def levelOf(light):
    return 16 + 219 * numpy.clip(light, 0, 1.09) ** (1 / 2.2)


def applyCurve(film, table, first=0, last=None, saturation=1):
    """Luma by a table of 256 levels, colours nearer to grey or further from it."""
    last = len(film) - 1 if last is None else last
    film.y[first:last + 1] = numpy.clip(numpy.asarray(table) + 0.5, 0, 255).astype(numpy.uint8)[film.y[first:last + 1]]
    if saturation != 1:
        for plane in (film.u, film.v):
            plane[first:last + 1] = numpy.clip((plane[first:last + 1] - 128.0) * saturation + 128.5, 0, 255)
