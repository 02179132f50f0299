"""Clean material: what the camera, the studio and the screen recorder give when nothing is wrong.

Each Content makes a film and says what is truly in it: where scenes change, where the picture is black or still.
"""
import dataclasses
import hashlib
import pathlib
import tempfile
import typing

import numpy

from calibration import films, shooting, sources

SIZES = ((352, 288), (480, 270), (640, 360), (640, 360), (640, 480), (960, 540))
RATES = (24, 25, 25, 30)
FONT = '/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf'
TEXT = '/usr/share/common-licenses/GPL-3'


def generator(*words):
    """Random numbers that are the same whenever the same thing is made."""
    digest = hashlib.sha1('/'.join(map(str, words)).encode()).digest()
    return numpy.random.default_rng(int.from_bytes(digest[:8], 'big'))


@dataclasses.dataclass
class Content:
    name: str
    half: str
    source: str
    material: str
    make: typing.Callable  # of (size, fps, count, rng): the film, and its truth: {'cuts': [...], 'also': [...]}
    size: tuple
    fps: int
    count: int
    isDamaged: bool = False  # whether damage is done to it, too
    words: tuple = ()  # what `make` closes over: part of the recipe


# --- shots --------------------------------------------------------------------------------------------------

SPEEDS = {'slow': 12, 'medium': 50, 'fast': 220}  # samples a second


def shot(name, size, fps, count, rng, speed='medium', look='plain'):
    """A hand-held shot of a photograph."""
    width, height = size
    room = {'slow': 1.2, 'medium': 1.3, 'fast': 1.5}[speed]
    scene = films.photo(sources.PHOTOS[name][1], (int(width * room) // 2 * 2, int(height * room) // 2 * 2))
    film = films.emptyFilm(count, size, fps)
    shooting.handHeld(scene, film, rng, SPEEDS[speed] * width / 640, 3 if speed == 'fast' else 1)
    LOOKS[look](film, rng)
    return film


def plain(film, rng):
    shooting.addNoise(film, rng, shooting.sensorGain(rng.uniform(0.5, 1.2)), spread=1)


def noisy(film, rng):
    """A small sensor with its gain up: the noise of many a telephone indoors."""
    shooting.addNoise(film, rng, shooting.sensorGain(rng.uniform(2, 3)), spread=1)


def grain(film, rng):
    """Scanned film of 16 mm."""
    shooting.addNoise(film, rng, shooting.grainGain(rng.uniform(3, 5)), spread=1, chroma=0.3)


def night(film, rng):
    """A street at night: few lights, the rest close to black, noise in it."""
    light = shooting.linearLight()
    shooting.applyCurve(film, shooting.levelOf(light * (0.06 + 0.5 * light ** 2)), saturation=0.7)
    shooting.addNoise(film, rng, shooting.sensorGain(rng.uniform(1.5, 2.5)), spread=1)


def fog(film, rng):
    """A morning in fog, as filmed: a narrow range in the middle, still with its darkest things."""
    level = numpy.arange(256)
    shooting.applyCurve(film, 175 + (level - 175) * rng.uniform(0.4, 0.55), saturation=0.5)
    shooting.addNoise(film, rng, shooting.sensorGain(1), spread=1)


LOOKS = {'plain': plain, 'noisy': noisy, 'grain': grain, 'night': night, 'fog': fog}


def realFilm(name, size, fps, count):
    _, path, first, frames, _ = sources.FILMS[name]
    inputs = ['-start_number', first, '-i', path] if '%' in str(path) else ['-i', path]
    skip = 0 if '%' in str(path) else first
    film = films.readFilm(inputs, size, fps, frames, f'trim=start_frame={skip},setpts=PTS-STARTPTS')
    there = list(range(len(film)))
    turns = there
    while len(turns) < count:  # a frame at which it turns is shown once
        there = there[::-1]
        turns = turns + there[1:]
    return films.Film(film.frames[turns[:count]], size, fps)


# --- drawn things --------------------------------------------------------------------------------------------


def drawnText(size, lines, fontSize, where='x=(w-tw)/2:y=(h-th)/2', paper='black', ink='white'):
    """A still picture with text."""
    text = '\n'.join(lines).replace('\\', '').replace("'", '').replace('%', '')
    with tempfile.NamedTemporaryFile('w', suffix='.txt', encoding='utf-8') as file:
        file.write(text)
        file.flush()
        return films.readFilm(['-f', 'lavfi', '-i', f'color={paper}:s={size[0]}x{size[1]}:r=25:d=0.04'], size, 25, 1,
                              f'drawtext=fontfile={FONT}:textfile={file.name}:fontsize={fontSize}:fontcolor={ink}:'
                              f'line_spacing=6:{where}')


def overlay(film, picture, x, y, opacity=1.0, first=0, last=None):
    """Lays a small film of one or as many frames over each frame, at even x and y."""
    last = len(film) - 1 if last is None else last
    for n in range(first, last + 1):
        for (plane, part), (small, _) in zip(film.planes(), picture.planes()):
            one = small[n % len(small)]
            place = plane[n, y // part:y // part + one.shape[0], x // part:x // part + one.shape[1]]
            place[:] = one if opacity == 1 else place + (one.astype(numpy.float32) - place) * opacity


def clock(fps, count, height=28):
    """A running clock of hundredths, as cameras and studios lay it over the picture."""
    width = height * 6 // 2 * 2
    return films.readFilm(['-f', 'lavfi', '-i', f'color=0x101010:s={width}x{height}:r={fps}'], (width, height), fps,
                          count, f"drawtext=fontfile={FONT}:text='%{{pts\\:hms}}':fontsize={height * 3 // 4}:"
                          'fontcolor=white:x=4:y=(h-th)/2')


def logo(height=32):
    """A station's logo: letters on a small coloured plate."""
    return drawnText((height * 2, height), ['TV7'], height * 2 // 3, paper='0x1040a0')


def paragraphs(skip, count, width):
    lines = [line.strip() for line in pathlib.Path(TEXT).read_text(encoding='utf-8').splitlines()]
    return [line[:width] for line in lines[skip:skip + count]]


# --- compositions --------------------------------------------------------------------------------------------


def nothing():
    return {'cuts': [], 'also': []}


def cutFilm(names, size, fps, count, rng, looks=('plain', 'plain', 'grain', 'noisy')):
    """A film of many shots, one to three seconds each, by true cuts; no shot is followed by its own picture."""
    made, cuts, total, last = [], [], 0, None
    while total < count:
        length = min(int(fps * rng.uniform(1, 3)), count - total)
        if count - total - length < fps // 2:
            length = count - total
        name = rng.choice([one for one in names if one != last])
        made.append(shot(name, size, fps, length, rng, rng.choice(['slow', 'medium', 'fast']), rng.choice(looks)))
        total += length
        cuts.append(total)
        last = name
    return films.joined(made), {'cuts': cuts[:-1], 'also': []}


def slideShow(names, size, fps, count, rng):
    """Pictures that stand still, two to three seconds each."""
    film, truth, at = films.emptyFilm(count, size, fps), nothing(), 0
    last = None
    while at < count:
        length = int(fps * rng.uniform(1.8, 3.2))
        name = rng.choice([one for one in names if one != last])
        last = name
        film.frames[at:at + length] = films.readFilm(['-i', sources.PHOTOS[name][1]], size, fps, 1).frames
        if at:
            truth['cuts'].append(at)
        at += length
    truth['also'].append(('freeze', 0, count - 1))
    return film, truth


def scrolling(size, fps, count, rng, dark):
    """A page of text that scrolls up, at a reader's or a hurried speed, with stops."""
    width, height = size
    fontSize = int(rng.choice([13, 16, 20]))
    speed = rng.uniform(0.5, 3)
    rows = height + int(speed * count) + 8
    paper, ink = ('0x202428', 'white') if dark else ('0xf8f8f0', '0x202020')
    lines = paragraphs(int(rng.integers(0, 200)), rows // (fontSize + 6), 70)
    page = drawnText((width, rows // 2 * 2), lines, fontSize, 'x=12:y=4', paper, ink)
    film = films.emptyFilm(count, size, fps)
    place, truth, stopped = 0.0, nothing(), 0
    for n in range(count):
        if stopped == 0 and rng.random() < 0.5 / fps:
            stopped = int(fps * rng.uniform(0.3, 1.5))
            truth['also'].append(('freeze', n, min(n + stopped, count - 1)))
        stopped = max(stopped - 1, 0)
        place += 0 if stopped else speed
        row = int(place) // 2 * 2
        for (out, part), (plane, _) in zip(film.planes(), page.planes()):
            out[n] = plane[0, row // part:row // part + out.shape[1]]
    return film, truth


def webcam(name, size, fps, count, rng):
    """A lecture: a still page, and the speaker in a corner."""
    width, height = size
    page = drawnText(size, paragraphs(int(rng.integers(0, 300)), 14, 60), height // 24, 'x=12:y=12', '0xf0f0f0',
                     '0x303060')
    film = films.emptyFilm(count, size, fps)
    film.frames[:] = page.frames
    small = (width // 4 // 4 * 4, height // 4 // 4 * 4)
    inset = shot(name, small, fps, count, rng, 'slow', 'noisy')
    overlay(film, inset, (width - small[0] - 8) // 2 * 2, (height - small[1] - 8) // 2 * 2)
    return film, nothing()


def titles(size, fps, count, rng):
    """Titles on black that come and go by fades."""
    film, truth, at = films.emptyFilm(count, size, fps), nothing(), 0
    while at < count:
        length = min(int(fps * rng.uniform(2.2, 3.5)), count - at)
        ramp = int(fps * 0.5)
        card = drawnText(size, paragraphs(int(rng.integers(0, 400)), int(rng.integers(1, 4)), 30), size[1] // 14)
        for n in range(length):
            shown = numpy.clip(min(n, length - 1 - n) / ramp, 0, 1)
            film.y[at + n] = 16 + (card.y[0] - 16.0) * shown + 0.5
        truth['also'].append(('black', at - 6, at + 6))
        truth['also'].append(('freeze', at, at + length - 1))
        at += length
    return film, truth


def credits(size, fps, count, rng):
    """Names that roll up on black."""
    width, height = size
    speed = rng.choice([1, 1.5, 2])
    rows = int(speed * count) + 2 * height
    page = drawnText((width, rows // 2 * 2), paragraphs(30, (rows - 2 * height) // 28, 34), 20,
                     f'x=(w-tw)/2:y={height // 2}')
    film = films.emptyFilm(count, size, fps)
    for n in range(count):
        row = int(speed * n)
        film.y[n] = page.y[0, row:row + height]
    return film, nothing()


def cartoon(size, fps, count, rng, hold):
    """Flat figures with outlines over a painted ground, each drawing held for two or three frames."""
    width, height = size
    ground = numpy.linspace(90, 190, height)[:, None] + 12 * numpy.sin(numpy.arange(width) / 37)
    xs, ys = numpy.arange(width), numpy.arange(height)[:, None]
    figures = [(rng.uniform(0.1, 0.9, 2), rng.uniform(0.05, 0.16) * height, rng.uniform(2, 6, 2), rng.uniform(0, 6, 2),
                int(rng.integers(40, 230)), rng.integers(60, 200, 2)) for _ in range(6)]
    film = films.emptyFilm(count, size, fps)
    for n in range(count):
        if n % hold:
            film.frames[n] = film.frames[n - 1]
            continue
        luma = ground.copy()
        film.u[n], film.v[n] = 118, 136
        for middle, radius, period, phase, level, colour in figures:
            x = width * (middle[0] + 0.2 * numpy.sin(phase[0] + 6.28 * n / fps / period[0]))
            y = height * (middle[1] + 0.2 * numpy.sin(phase[1] + 6.28 * n / fps / period[1]))
            distance = numpy.hypot(xs - x, (ys - y) * 1.2)
            luma[distance < radius] = level
            luma[numpy.abs(distance - radius) < 1.6] = 20
            inside = (distance < radius)[::2, ::2][:film.u.shape[1], :film.u.shape[2]]
            film.u[n][inside], film.v[n][inside] = colour
        film.y[n] = luma
    return film, nothing()


def flashes(name, size, fps, count, rng):
    """Photographers at a reception: single frames far too bright, the next one a little."""
    film = shot(name, size, fps, count, rng)
    light = shooting.linearLight()
    for at in sorted(rng.choice(numpy.arange(fps, count - fps), 6, replace=False)):
        for n, gain in ((at, rng.uniform(2.5, 5)), (at + 1, 1.3)):
            shooting.applyCurve(film, shooting.levelOf(0.04 + light * gain), n, n)
    return film, nothing()


def fades(names, size, fps, count, rng):
    """A scene comes out of black, another one follows through black."""
    half = count // 2
    parts = [shot(names[0], size, fps, half, rng), shot(names[1], size, fps, count - half, rng, 'slow')]
    ramp = int(fps * rng.uniform(0.5, 1.5))
    for film in parts:
        for n in range(len(film)):
            shown = min(n, len(film) - 1 - n) / ramp
            if shown < 1:
                film.y[n] = 16 + (film.y[n] - 16.0) * shown + 0.5
                film.u[n] = 128 + (film.u[n] - 128.0) * shown + 0.5
                film.v[n] = 128 + (film.v[n] - 128.0) * shown + 0.5
    around = max(ramp // 3, 4)
    return films.joined(parts), {'cuts': [], 'also': [('black', at - around, at + around) for at in (0, half, count)]}


def crossfades(names, size, fps, count, rng):
    third, ramp = count // 3, int(fps * rng.uniform(0.5, 1.5))
    film = shot(names[0], size, fps, count, rng)
    for i, name in enumerate(names[1:3], 1):
        other = shot(name, size, fps, count, rng, 'slow')
        for n in range(i * third, count):
            shown = min((n - i * third) / ramp, 1)
            film.frames[n] = film.frames[n] + (other.frames[n].astype(numpy.float32) - film.frames[n]) * shown + 0.5
    return film, nothing()


def marked(name, size, fps, count, rng):
    """A shot with a logo and a running clock, as on any station."""
    film = shot(name, size, fps, count, rng, rng.choice(['slow', 'medium']))
    overlay(film, logo(size[1] // 10 // 2 * 2), 16, 16, 0.8)
    small = clock(fps, count, size[1] // 14 // 2 * 2)
    overlay(film, small, (size[0] - small.size[0] - 16) // 2 * 2, (size[1] - small.size[1] - 16) // 2 * 2)
    return film, nothing()


# --- the list ------------------------------------------------------------------------------------------------


def contents():
    """Everything clean that is made, in a fixed order."""
    made = []

    def add(name, half, source, material, make, size=None, isDamaged=False, words=()):
        rng = generator('content', name)
        size = size or SIZES[rng.integers(len(SIZES))]
        fps = int(RATES[rng.integers(len(RATES))])
        if size[0] <= 480 and rng.random() < 0.12:
            fps = 50
        made.append(Content(name, half, source, material, make, size, fps, int(fps * rng.uniform(9, 14)), isDamaged,
                            words))

    def composed(function, *rest):
        return lambda size, fps, count, rng: function(*rest, size, fps, count, rng)

    for half in ('choose', 'verify'):
        names = [name for name, (own, _) in sources.PHOTOS.items() if own == half]
        for i, name in enumerate(names):
            speed = ('slow', 'medium', 'medium', 'fast')[i % 4]
            look = ('plain', 'noisy', 'plain', 'grain', 'plain')[i % 5]
            add(f'{name}-{speed}-{look}', half, name, 'handHeld', lambda size, fps, count, rng, name=name, speed=speed,
                look=look: (shot(name, size, fps, count, rng, speed, look), nothing()), isDamaged=i % 5 in (0, 2, 3),
                words=(name, speed, look))
        for i, look in enumerate(('night', 'fog') * 5):
            name = names[(3 * i + 1) % len(names)]
            add(f'{name}-{look}-{i}', half, name, look, lambda size, fps, count, rng, name=name, look=look:
                (shot(name, size, fps, count, rng, 'slow' if look == 'fog' else 'medium', look), nothing()),
                isDamaged=look == 'night' and i == 4, words=(name, look))
        for i in range(4):
            some = names[i::4]
            add(f'{half}-cuts-{i}', half, '+'.join(some), 'cuts', composed(cutFilm, some), words=tuple(some))
        for i in range(3):
            some = names[i::3][:6]
            add(f'{half}-slides-{i}', half, '+'.join(some), 'slides', composed(slideShow, some), words=tuple(some))
        for i in range(3):
            dark = bool(i % 2)
            add(f'{half}-scroll-{i}', half, 'text', 'scroll', lambda size, fps, count, rng, dark=dark:
                scrolling(size, fps, count, rng, dark), words=(dark,))
        for i in range(2):
            name = names[5 * i + 2]
            add(f'{name}-webcam', half, name, 'webcam', composed(webcam, name), size=(640, 480), words=(name,))
        for i in range(2):
            add(f'{half}-titles-{i}', half, 'text', 'titles', titles)
            add(f'{half}-credits-{i}', half, 'text', 'credits', credits)
        for i, hold in enumerate((2, 3)):
            add(f'{half}-cartoon-{hold}', half, f'figures of {half}', 'cartoon',
                lambda size, fps, count, rng, hold=hold: cartoon(size, fps, count, rng, hold), words=(hold,))
        for i in range(2):
            name = names[7 * i + 4]
            add(f'{name}-flashes', half, name, 'flashes', composed(flashes, name), words=(name,))
            add(f'{name}-fades', half, name, 'fades', composed(fades, [name, names[7 * i + 6]]), words=(name,))
            add(f'{name}-crossfades', half, name, 'crossfades', composed(crossfades, names[7 * i + 3:7 * i + 6]),
                words=(name,))
        for i in range(3):
            name = names[4 * i + 3]
            add(f'{name}-marked', half, name, 'marked', composed(marked, name), isDamaged=i == 0, words=(name,))
    for name, (half, _, first, frames, size) in sources.FILMS.items():
        add(f'{name}-film', half, name, 'film', lambda size, fps, count, rng, name=name:
            (realFilm(name, size, fps, count), nothing()), size=size, isDamaged=True, words=(name, first, frames))
    return made
