#!/usr/bin/env python3
"""Holds the thresholds of lumascan's events against clips that are clean and clips that are damaged on purpose.

usage: calibrate.py make   WORK LUMASCAN   makes all clips and analyses them, into WORK/results
       calibrate.py search WORK            what other levels would find of the clips for choosing
       calibrate.py judge  WORK LUMASCAN   what the program's own thresholds find, as tables

docs/thresholds.md says what is made and what is counted. Needs ffmpeg and, for their pictures, the Debian packages
python3-imageio, python3-mecavideo, opencv-doc and mate-backgrounds. The figures are those of the program's rules;
`search` has its own form of them, to try levels quickly.
"""
import argparse
import concurrent.futures
import csv
import itertools
import math
import pathlib
import subprocess
import sys

IMAGEIO = '/usr/lib/python3/dist-packages/imageio/resources/images/'
MECAVIDEO = '/usr/share/pymecavideo/data/video/'
OPENCV = '/usr/share/doc/opencv-doc/examples/data/'
NATURE = '/usr/share/backgrounds/mate/nature/'
ABSTRACT = '/usr/share/backgrounds/mate/abstract/'

FPS = 25
FRAMES = 300  # of every made clip
FIRST, LAST = 100, 149  # the damaged ones
TURN = 160  # the frame at which a camera over a photograph turns back, some frames after the damage
SEEN = 35  # dB of luma PSNR that damaged frames have at most, or nobody would call them damaged
JOBS = 2
STRENGTHS = ('weak', 'medium', 'strong')
DELIVERIES = {  # how a made clip reaches the analyser
    'lossless': ['-c:v', 'utvideo'],
    'h264': ['-c:v', 'libx264', '-preset', 'superfast', '-crf', '20', '-g', '50'],
}


def video(path, size, skip, count):
    """`count` frames of a file, one after the other at FPS: forwards, backwards and forwards again. A frame at which
    it turns is shown once."""
    return (['-r', str(FPS), '-i', path],
            f'trim=start_frame={skip}:end_frame={skip + count},scale={size}:flags=area,split=3[x][y][z];'
            '[y]reverse,trim=start_frame=1[b];[z]trim=start_frame=1[c];'
            f'[x][b][c]concat=n=3,setpts=N/{FPS}/TB')


def photo(path, dx, dy, grain=0, scale='1280:720:force_original_aspect_ratio=increase:flags=area', start=(40, 20),
          size=(640, 360)):
    """A camera that goes over a photograph by dx, dy samples a frame, and back; grain: strength of its noise."""
    noise = f',noise=c0s={grain}:c0f=t' if grain else ''
    # With chroma of half the size a crop goes by two samples: a slow move would stand still every second frame.
    fine = ',format=yuv444p' if max(dx, dy) == 1 else ''
    return (['-i', path],
            f'scale={scale}{fine},loop={FRAMES}:1:0,setpts=N/{FPS}/TB,'
            f"crop={size[0]}:{size[1]}:'{start[0]}+{dx}*({TURN}-abs(n-{TURN}))'"
            f":'{start[1]}+{dy}*({TURN}-abs(n-{TURN}))'{noise}")


def smallPhoto(path, dx, dy, grain=0):
    return photo(path, dx, dy, grain, 'iw:ih', (0, 0), (352, 288))


def generated(source):
    return (['-f', 'lavfi', '-i', f'{source}:r={FPS}'], 'null')


# Name: (half, kind, (input, filter)). No picture is in both halves, though the same camera and the same film are:
# "choose" is what levels are chosen by, "verify" what they are tried on.
CLIPS = {
    'cockatoo': ('choose', 'camera', video(IMAGEIO + 'cockatoo.mp4', '640:360', 0, 280)),
    'balle': ('choose', 'camera', video(MECAVIDEO + 'balle-jbart.mp4', '480:384', 0, 255)),
    'greenMeadow': ('choose', 'photo', photo(NATURE + 'GreenMeadow.jpg', 3, 1)),
    'ladyBird': ('choose', 'photo', photo(NATURE + 'LadyBird.jpg', 1, 1, 4)),
    'wood': ('choose', 'photo', photo(NATURE + 'Wood.jpg', 2, 2)),
    'storm': ('choose', 'photo', photo(NATURE + 'Storm.jpg', 4, 0, 4, start=(0, 20))),
    'freshFlower': ('choose', 'photo', photo(NATURE + 'FreshFlower.jpg', 2, 0)),
    'testsrc2': ('choose', 'graphics', generated('testsrc2=s=640x360')),
    'gradients': ('choose', 'graphics', generated('gradients=s=640x360:seed=7:speed=0.05:nb_colors=5')),
    'megamind': ('choose', 'camera', video(OPENCV + 'Megamind.avi', '480:352', 2, 152)),  # from its first picture
    'vtest': ('choose', 'camera', video(OPENCV + 'vtest.avi', '480:360', 0, 300)),
    'garden': ('choose', 'photo', photo(NATURE + 'Garden.jpg', 2, 1)),
    'dune': ('choose', 'photo', photo(NATURE + 'Dune.jpg', 3, 0, 4)),
    'twoWings': ('choose', 'photo', photo(NATURE + 'TwoWings.jpg', 1, 2)),
    'yellowFlower': ('choose', 'photo', photo(NATURE + 'YellowFlower.jpg', 3, 2, 4)),
    'blinds': ('choose', 'photo', photo(NATURE + 'Blinds.jpg', 2, 1)),
    'mandelbrot': ('choose', 'graphics', generated('mandelbrot=s=640x360')),
    'sierpinski': ('choose', 'graphics', generated('sierpinski=s=640x360:seed=3')),
    'elephants': ('choose', 'photo', photo(ABSTRACT + 'Elephants.jpg', 2, 1)),
    'building': ('choose', 'photo', photo(OPENCV + 'building.jpg', 1, 1, 0, 'iw:ih')),
    'stuff': ('choose', 'photo', smallPhoto(OPENCV + 'stuff.jpg', 1, 1)),
    'baboon': ('choose', 'photo', smallPhoto(OPENCV + 'baboon.jpg', 1, 1)),
    'fruits': ('choose', 'photo', smallPhoto(OPENCV + 'fruits.jpg', 1, 1, 4)),
    'astronaut': ('choose', 'photo', smallPhoto(IMAGEIO + 'astronaut.png', 1, 1)),
    'gradientsLater': ('choose', 'graphics', generated('gradients=s=640x360:seed=11:speed=0.02:nb_colors=8')),
    'megamindLater': ('verify', 'camera', video(OPENCV + 'Megamind.avi', '480:352', 154, 116)),
    'vtestLater': ('verify', 'camera', video(OPENCV + 'vtest.avi', '480:360', 490, 300)),
    'aqua': ('verify', 'photo', photo(NATURE + 'Aqua.jpg', 2, 1)),
    'rainDrops': ('verify', 'photo', photo(NATURE + 'RainDrops.jpg', 3, 1, 4)),
    'aloe': ('verify', 'photo', photo(OPENCV + 'aloeL.jpg', 2, 2)),
    'leuven': ('verify', 'photo', photo(OPENCV + 'leuvenA.jpg', 0, 1, 4, 'iw:ih')),
    'graf': ('verify', 'photo', photo(OPENCV + 'graf1.png', 0, 1, 0, 'iw:ih')),
    'starryNight': ('verify', 'photo', photo(OPENCV + 'starry_night.jpg', 0, 1, 0, 'iw:ih')),
    'messi': ('verify', 'photo', smallPhoto(OPENCV + 'messi5.jpg', 1, 0)),
    'squirrel': ('verify', 'photo', smallPhoto(OPENCV + 'squirrel_cls.jpg', 1, 0, 4)),
    'rubberWhale': ('verify', 'photo', smallPhoto(OPENCV + 'rubberwhale1.png', 1, 0)),
    'cellauto': ('verify', 'graphics', generated('cellauto=s=640x360:rule=110:random_seed=5')),
    'gradientsLast': ('verify', 'graphics', generated('gradients=s=640x360:seed=23:speed=0.03:nb_colors=4')),
}

# Clean files as they came.
ORIGINALS = {
    'cockatoo.mp4': ('choose', IMAGEIO),
    'balle-jbart.mp4': ('choose', MECAVIDEO),
    'Effet_force_magnetique.ogv': ('choose', MECAVIDEO),
    'Force_constante.avi': ('choose', MECAVIDEO),
    'Principe_inertie.avi': ('choose', MECAVIDEO),
    'realshort.mp4': ('choose', IMAGEIO),
    'newtonscradle.gif': ('choose', IMAGEIO),
    'balle1-vp9.avi': ('choose', MECAVIDEO),
    'g1.avi': ('choose', MECAVIDEO),
    'retroMars2018.avi': ('choose', MECAVIDEO),
    'Megamind.avi': ('choose', OPENCV),
    'vtest.avi': ('choose', OPENCV),
    'g2.avi': ('verify', MECAVIDEO),
    'tree.avi': ('verify', OPENCV),
}

# What is truly there in clean material, found by looking at it: (type, first frame, last frame).
TRUE_EVENTS = {
    'cockatoo.mp4': [('blur', 150, 180)],  # out of focus
    'Megamind.avi': [('black', 0, 0), ('scene_cut', 98, 98), ('scene_cut', 154, 154), ('scene_cut', 200, 200)],
    'megamind': [('scene_cut', 96, 96), ('scene_cut', 207, 207)],
    'megamindLater': [('scene_cut', 46, 46), ('scene_cut', 185, 185), ('scene_cut', 276, 276)],
}

# --- damage: one filter graph from [clean] to [damaged] for each type and strength --------------------------

QUANTISERS = {'weak': 10, 'medium': 18, 'strong': 31}  # of MPEG-4 part 2
FREEZES = {'weak': 8, 'medium': 25, 'strong': 50}  # frames
# Lasting from the first frame to the last one, so that there is no clean part to compare with.
THROUGHOUT = ('blur', 'noise', 'blockiness')

WINDOW = f"enable='between(t,{(FIRST - 0.5) / FPS},{(LAST + 0.5) / FPS})'"


def inWindow(graph):
    """[clean] with what the graph makes of it, [b] to [c], laid over it in the window."""
    return f'[clean]split[a][b];{graph};[a][c]overlay={WINDOW}:format=yuv420[damaged]'


def simple(filters):
    """Filters that can be switched on and off."""
    return f"[clean]{','.join(f'{one}:{WINDOW}' for one in filters)}[damaged]"


def levels(gain, about, offset=0):
    return simple([f'lutyuv=y=clip((val-{about})*{gain}+{about}+{offset}\\,0\\,255)'])


def bars(left, top):
    """Black bars, as shares of the width and the height."""
    w, h = f'trunc(iw*{left}/2)*2', f'trunc(ih*{top}/2)*2'
    boxes = [f'x=0:y=0:w={w}:h=ih', f'x=iw-{w}:y=0:w={w}:h=ih'] if left else [f'x=0:y=0:w=iw:h={h}',
                                                                               f'x=0:y=ih-{h}:w=iw:h={h}']
    return simple([f'drawbox={box}:color=black:t=fill' for box in boxes])


def blockLoss(size, share):
    w, h = size
    columns, rows = math.ceil(w / 16), math.ceil(h / 16)
    return ('[clean]split=3[a][b][d];[b]drawbox=color=gray:t=fill[o];'
            f"color=black:s={columns * 2}x{rows * 2}:r={FPS}:d={FRAMES / FPS},format=yuv420p,"
            f"geq=lum='if(lt(st(0,random(1)),{share}),255,0)':cb=128:cr=128,scale={columns}:{rows}:flags=neighbor,"
            f'scale={columns * 16}:{rows * 16}:flags=neighbor,crop={w}:{h}:0:0[m];'
            f'[d][o][m]maskedmerge=planes=1[c];[a][c]overlay={WINDOW}:format=yuv420:shortest=1[damaged]')


def slices(size, share):
    """Bands of 16 rows that repeat their columns 64 to 79."""
    w, h = size
    columns, rows = math.ceil(w / 16), math.ceil(h / 16)
    strips = ''.join(f'[s{i}]' for i in range(columns))
    return (f'[clean]split=3[a][b][d];[b]crop=16:{h}:64:0,split={columns}{strips};{strips}hstack=inputs={columns},'
            f'crop={w}:{h}:0:0[o];'
            f"color=black:s=2x{rows * 2}:r={FPS}:d={FRAMES / FPS},format=yuv420p,"
            f"geq=lum='if(lt(mod(floor(Y/2)*7+N*5,{rows}),{rows}*{share}),255,0)':cb=128:cr=128,"
            f'scale={columns * 16}:{rows * 16}:flags=neighbor,crop={w}:{h}:0:0[m];'
            f'[d][o][m]maskedmerge[c];[a][c]overlay={WINDOW}:format=yuv420:shortest=1[damaged]')


def combing(distance):
    """The odd lines are those of the frame `distance` further on."""
    return inWindow(f'[b]split[e][f];[f]trim=start_frame={distance},setpts=PTS-STARTPTS[g];'
                    "[e][g]blend=c0_expr='if(mod(Y,2),B,A)'[c]")


def flicker(share):
    """A part of the picture is renewed in every second frame only."""
    return inWindow(f'[b]framestep=2,fps={FPS},crop=iw:trunc(ih*{share}/16)*16:0:0[c]')


def freeze(frames):
    """Frame FIRST - 1 stays for `frames` more; what it pushed out is dropped, so that the clip keeps its length."""
    return (f'[clean]split=3[a][b][d];[a]trim=end_frame={FIRST}[x];'
            f'[b]trim=start_frame={FIRST - 1}:end_frame={FIRST},setpts=PTS-STARTPTS,loop={frames - 1}:1:0,'
            f'setpts=N/{FPS}/TB[y];'
            f'[d]trim=start_frame={FIRST + frames},setpts=PTS-STARTPTS[z];[x][y][z]concat=n=3[damaged]')


def coded():
    """Coded coarsely: makeDamaged() gives that as the second input."""
    return f'[clean][1:v]overlay={WINDOW}:format=yuv420[damaged]'


def damages(size):
    """Type: what is done at the three strengths."""
    noisyBlack = f'[clean]drawbox=color=black:t=fill:{WINDOW},noise=c0s=6:c0f=t:{WINDOW}[damaged]'
    return {
        'black': (levels(0.03, 16), noisyBlack, simple(['drawbox=color=black:t=fill'])),
        'freeze': tuple(freeze(FREEZES[strength]) for strength in STRENGTHS),
        'letterbox': (bars(0, 0.04), bars(0, 0.08), bars(0, 0.125)),
        'pillarbox': (bars(0.04, 0), bars(0.08, 0), bars(0.125, 0)),
        'combing': (combing(1), combing(2), combing(4)),
        'block_loss': (blockLoss(size, 0.01), blockLoss(size, 0.03), blockLoss(size, 0.08)),
        'slice': (slices(size, 0.05), slices(size, 0.15), slices(size, 0.3)),
        'flicker': (flicker(0.15), flicker(0.5), flicker(1)),
        'over_exposure': (levels(1, 16, 30), levels(1.4, 16, 50), levels(1.6, 16, 90)),
        'under_exposure': (levels(0.6, 16), levels(0.35, 16), levels(0.15, 16)),
        'low_contrast': (levels(0.5, 110), levels(0.2, 110), levels(0.1, 110)),
        'blockiness': (coded(), coded(), coded()),
        'blur': (simple(['gblur=sigma=1']), simple(['gblur=sigma=2']), simple(['gblur=sigma=4'])),
        'noise': (simple(['noise=c0s=10:c0f=t']), simple(['noise=c0s=25:c0f=t']), simple(['noise=c0s=50:c0f=t'])),
    }


# --- making -------------------------------------------------------------------------------------------------


def run(command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, check=False, **options)
    if result.returncode != 0:
        sys.exit(f'{" ".join(str(word) for word in command)}\n{result.stderr.decode()}')
    return result.stdout


def ffmpeg(*arguments):
    run(['ffmpeg', '-nostdin', '-v', 'error', '-y', '-filter_threads', 1, '-filter_complex_threads', 1, *arguments])


def sizeOf(path):
    text = run(['ffprobe', '-v', 'error', '-select_streams', 'v:0', '-show_entries', 'stream=width,height', '-of',
                'csv=p=0', path]).decode()
    return tuple(int(number) for number in text.strip().strip(',').split(','))


def analyse(options, folder, inputs, name):
    """The program's results of inputs that are named as seen from their folder, in WORK/results/NAME."""
    run([options.lumascan, 'scan', *inputs, '-o', options.work / 'results' / name, '-j', JOBS, '--formats', 'csv',
         '--thumbs', 'none', '-q'], cwd=folder)


def sourceOf(options, clip):
    return options.work / 'sources' / f'{clip}.mkv'


def makeSource(options, clip):
    _, _, (inputs, filters) = CLIPS[clip]
    ffmpeg(*inputs, '-vf', f'{filters},format=yuv420p', '-frames:v', FRAMES, '-an', '-c:v', 'utvideo',
           sourceOf(options, clip))


def deliver(folder, name, inputs, graph, deliveries, frames=FRAMES):
    """Writes [damaged] of a graph in these deliveries: FOLDER/NAME.DELIVERY.mkv."""
    ends = ''.join(f'[{delivery}]' for delivery in deliveries)
    outputs = []
    for delivery in deliveries:
        outputs += ['-map', f'[{delivery}]', '-frames:v', frames, *DELIVERIES[delivery],
                    folder / f'{name}.{delivery}.mkv']
    ffmpeg(*inputs, '-filter_complex', f'{graph};[damaged]format=yuv420p,split={len(deliveries)}{ends}', *outputs)


def errorsOf(options, clip, name):
    """Where ffmpeg's psnr filter writes what was damaged, frame by frame."""
    return options.work / 'errors' / clip / f'{name}.txt'


def measured(path):
    """[damaged] is held against [true] on its way; both are counted by frames, whatever times they have."""
    count = f'settb=1/{FPS},setpts=N'
    return (f';[damaged]split[seen][measured];[measured]format=yuv420p,{count}[m];[true]{count}[t];'
            f'[m][t]psnr=stats_file={path},nullsink;[seen]null[damaged]')


def makeDamaged(options, folder, clip, kind, strength, throughout):
    source = sourceOf(options, clip)
    inputs = ['-i', source]
    graph = '[clean]null[damaged]'
    name = nameOf(kind, strength, throughout)
    coarse = None
    if kind == 'blockiness':
        coarse = folder.with_name(f'{clip}.{name}.avi')  # not beside the clips, which are all analysed
        ffmpeg('-i', source, '-c:v', 'mpeg4', '-qscale:v', QUANTISERS[strength], coarse)
        inputs += ['-i', coarse]
    if kind != 'clean':
        graph = damages(sizeOf(source))[kind][STRENGTHS.index(strength)]
    if throughout:
        graph = graph.replace(f':{WINDOW}', '').replace(f'={WINDOW}:', '=')
    errors = errorsOf(options, clip, name)
    errors.parent.mkdir(parents=True, exist_ok=True)
    deliver(folder, name, inputs, f'[0:v]split[clean][true];{graph}{measured(errors)}', deliveriesOf(strength))
    if coarse:
        coarse.unlink()


def nameOf(kind, strength, throughout):
    return f'{kind}.{strength}' + ('.throughout' if throughout else '')


def deliveriesOf(strength):
    """What is to show the limits only is made as most files are."""
    return ('h264',) if strength in ('weak', 'strong') else tuple(DELIVERIES)


def versionsOf(strengths):
    """Kind, strength, whether it lasts throughout, of everything that is made of a clip at these strengths."""
    if 'none' in strengths:
        yield 'clean', 'none', False
    for kind in damages((640, 360)):
        for strength in strengths:
            if strength != 'none':
                yield kind, strength, False
        if kind in THROUGHOUT and 'medium' in strengths:
            yield kind, 'medium', True


# Part of the results: strengths. In the order in which they are made: levels are chosen by the first part.
PARTS = {'middle': ('none', 'medium'), 'ends': ('weak', 'strong')}


def makeCuts(options, folder, half):
    """A second of every clip of the half, and another one of each."""
    clips = [clip for clip in CLIPS if CLIPS[clip][0] == half]
    inputs = [word for clip in clips for word in ('-i', sourceOf(options, clip))]
    graph = ''
    for i in range(len(clips)):
        graph += f'[{i}:v]scale=640:360,setsar=1,split[u{i}x0][u{i}x100];'
        for start in (0, 100):
            graph += (f'[u{i}x{start}]trim=start_frame={start}:end_frame={start + FPS},setpts=PTS-STARTPTS'
                      f'[c{start}x{i}];')
    order = ''.join(f'[c{start}x{i}]' for start in (0, 100) for i in range(len(clips)))
    count = 2 * len(clips)
    deliver(folder, f'cuts.{half}', inputs, f'{graph}{order}concat=n={count}[damaged]', DELIVERIES, count * FPS)


def make(options):
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        def each(function, items):
            list(pool.map(function, items))

        def inFolder(name, fill):
            """Makes clips, analyses them and throws them away; passes over what an earlier run has done."""
            folder = options.work / 'clips' / name
            if (options.work / 'results' / name / 'summary.csv').exists():
                return
            folder.mkdir(parents=True, exist_ok=True)
            fill(folder)
            analyse(options, folder, ['.'], name)
            for path in folder.iterdir():
                path.unlink()

        (options.work / 'sources').mkdir(parents=True, exist_ok=True)
        each(lambda clip: makeSource(options, clip), CLIPS)
        for name, (_, folder) in ORIGINALS.items():
            analyse(options, folder, [name], f'originals/{name}')
        inFolder('cuts', lambda folder: each(lambda half: makeCuts(options, folder, half), ('choose', 'verify')))
        for part, strengths in PARTS.items():
            for clip in CLIPS:
                inFolder(f'{clip}.{part}', lambda folder, clip=clip, strengths=strengths: each(
                    lambda version: makeDamaged(options, folder, clip, *version), versionsOf(strengths)))
                print(clip, part, flush=True)


# --- what was made and what was found -----------------------------------------------------------------------


class Version:
    """One analysed file. truth: (type, first frame, last frame) of what is there; kind: clean, cuts or the damage;
    isSeen: the damage changes the picture enough to be called damage."""

    def __init__(self, folder, half, material, delivery, kind, strength, truth, isSeen=True):
        self.folder, self.half, self.material, self.delivery = folder, half, material, delivery
        self.kind, self.strength, self.truth = kind, strength, truth
        self.isSeen = isSeen
        self.events = []  # (type, first frame, last frame)

    def frames(self):
        with open(self.folder / 'frames.csv', newline='', encoding='utf-8') as file:
            return list(csv.DictReader(file))


def psnr(path, damage):
    """Of the luma of the damaged frames together, against what they should be, in dB."""
    _, first, last = damage
    with open(path, encoding='ascii') as file:
        errors = [float(dict(word.split(':') for word in line.split())['mse_y']) for line in file]
    error = sum(errors[first:last + 1]) / (last - first + 1)
    return 10 * math.log10(255 ** 2 / error) if error > 0 else math.inf


def versions(options):
    results = options.work / 'results'
    for name, (half, _) in ORIGINALS.items():
        yield Version(results / 'originals' / name / f'{name}.lumascan', half, 'original', 'original', 'clean',
                      'none', TRUE_EVENTS.get(name, []))
    for delivery in DELIVERIES:
        for half in ('choose', 'verify'):
            count = 2 * sum(clip[0] == half for clip in CLIPS.values())
            truth = [('scene_cut', k * FPS, k * FPS) for k in range(1, count)]
            yield Version(results / 'cuts' / f'cuts.{half}.{delivery}.mkv.lumascan', half, 'mixed', delivery, 'cuts',
                          'medium', truth)
    for part, strengths in PARTS.items():
        for clip, (half, material, _) in CLIPS.items():
            for kind, strength, throughout in versionsOf(strengths):
                name = nameOf(kind, strength, throughout)
                last = FIRST + FREEZES[strength] - 1 if kind == 'freeze' else LAST
                damage = (kind, 0, FRAMES - 1) if throughout else (kind, FIRST, last)
                isSeen = kind == 'clean' or psnr(errorsOf(options, clip, name), damage) <= SEEN
                for delivery in deliveriesOf(strength):
                    yield Version(results / f'{clip}.{part}' / f'{name}.{delivery}.mkv.lumascan', half, material,
                                  delivery, kind, 'throughout' if throughout else strength,
                                  TRUE_EVENTS.get(clip, []) + ([damage] if kind != 'clean' else []), isSeen)


def overlap(a, b):
    return max(0, min(a[2], b[2]) - max(a[1], b[1]) + 1)


def isFound(damage, events):
    """At least half of its frames lie in events of its type."""
    kind, first, last = damage
    return 2 * sum(overlap(damage, event) for event in events if event[0] == kind) >= last - first + 1


def isFalse(event, truth):
    """Of no such thing, not even beside it."""
    return not any(event[0] == true[0] and overlap(event, true) > 0 for true in truth)


# --- trying levels ------------------------------------------------------------------------------------------

STRETCHES = {  # type: (indicator, sign: 1 where high is worse)
    'letterbox': ('letterbox', 1), 'pillarbox': ('pillarbox', 1), 'combing': ('interlace', 1),
    'block_loss': ('block_loss', 1), 'slice': ('slice', 1), 'flicker': ('flickering', 1),
    'over_exposure': ('exposure', 1), 'under_exposure': ('exposure', -1), 'low_contrast': ('contrast', -1),
    'blockiness': ('blockiness', -1), 'blur': ('blur', 1), 'noise': ('noise', 1),
}

# What is tried, in the words of thresholds.cpp; `leave` as a share of `enter`.
TRIED = {
    'letterbox': {'enter': (0.03, 0.05, 0.07), 'leave': (0.6,), 'min_s': (0.2, 0.3, 0.5)},
    'pillarbox': {'enter': (0.03, 0.05, 0.06, 0.08), 'leave': (0.6,), 'min_s': (0.3, 0.5, 0.8, 1)},
    'combing': {'enter': (0.02, 0.025, 0.026, 0.027, 0.028, 0.03), 'leave': (0.5,), 'min_s': (0.3, 0.5, 1),
                'hold_s': (0, 0.3)},
    'block_loss': {'enter': (10, 15, 20, 30), 'leave': (0.35,), 'min_s': (0.3, 0.4, 0.6), 'ratio': (0, 3, 4, 5),
                   'alone': (200, 300, 400), 'hold_s': (0, 0.3, 0.5)},
    'slice': {'enter': (8, 10, 12, 18, 25), 'leave': (0.4,), 'min_s': (0.2, 0.3, 0.4, 0.6), 'ratio': (4, 5, 6, 8),
              'hold_s': (0, 0.3)},
    'flicker': {'enter': (0.7, 0.75, 0.8, 0.83, 0.85), 'leave': (0.9,), 'min_s': (0.6, 0.9, 1.2)},
    'over_exposure': {'enter': (145, 150, 155, 160, 175), 'leave': (0.96,), 'min_s': (0.3,), 'mad': (0, 4, 6),
                      'least': (20, 25, 30), 'alone': (175, 190)},
    'under_exposure': {'enter': (60, 70, 78, 85), 'leave': (1.05,), 'min_s': (0.3, 1)},
    'low_contrast': {'enter': (9.7, 12, 14.6, 15.5, 18, 22), 'leave': (1.1,), 'min_s': (0.3,), 'mad': (0, 2, 4),
                     'least': (15, 20), 'alone': (9.7,)},
    'blockiness': {'enter': (0.5, 0.55, 0.6, 0.62, 0.65, 0.7, 0.8), 'leave': (1.12,), 'min_s': (0.3, 0.7, 0.8, 1),
                   'mad': (6,), 'least': (0.1, 0.15, 0.25), 'hold_s': (0, 0.5, 0.6)},
    'blur': {'enter': (5, 5.5, 6), 'leave': (0.9,), 'min_s': (1, 1.2, 1.5), 'mad': (6,), 'least': (0.5, 1, 2, 3)},
    'noise': {'enter': (2, 3, 4, 5), 'leave': (0.8,), 'min_s': (0.3,), 'mad': (6,), 'least': (0.3, 1, 2, 3)},
}


class Series:
    """What a type's rule looks at in one file: values turned so that high is worse, None if undefined, and times."""

    def __init__(self, values, times, ends):
        self.values, self.times, self.ends = values, times, ends
        self.held = {}  # seconds: (values, median, deviation)

    def heldFor(self, seconds):
        if seconds not in self.held:
            values = self.values
            if seconds:
                values = []
                first = 0
                for i, value in enumerate(self.values):
                    while self.times[i] - self.times[first] >= seconds - 1e-3:
                        first += 1
                    if value is None:
                        first = i + 1
                    values.append(max(self.values[first:i + 1], default=None))
            defined = [value for value in values if value is not None] or [math.nan]
            middle = median(defined)
            self.held[seconds] = values, middle, median([abs(value - middle) for value in defined])
        return self.held[seconds]


def seriesOf(version, kind):
    indicator, sign = STRETCHES[kind]
    rows = version.frames()
    values = [sign * float(row[indicator]) if row[indicator] else None for row in rows]
    if indicator == 'flickering':
        values = spreadOverPeriods(values)
    else:
        values = [None if row['blackout'] == '1' else value for row, value in zip(rows, values)]
    times = [float(row['time_s']) for row in rows]
    return Series(values, times, [time + float(row['duration_s'] or 0) for time, row in zip(times, rows)])


def spreadOverPeriods(values):
    last, age, spoken = None, 0, len(values)
    values = list(values)
    for i in reversed(range(len(values))):
        if values[i] is not None:
            if last is None:
                spoken = i
            last, age = values[i], 0
        elif age < 8:
            values[i] = last
        age += 1
    return values[:spoken + 1] + values[spoken:spoken + 1] * (len(values) - spoken - 1)


def median(values):
    values = sorted(values)
    middle = len(values) // 2
    return values[middle] if len(values) % 2 else (values[middle - 1] + values[middle]) / 2


def levelsOf(kind, level, middle, deviation):
    sign = STRETCHES[kind][1]
    enter, leave = sign * level['enter'], sign * level['enter'] * level['leave']
    if not (level.get('ratio') or level.get('mad')):
        return enter, leave
    if level.get('ratio'):
        relative = level['ratio'] * middle, level['ratio'] * middle * level['leave']
    else:
        reach = max(level['mad'] * deviation, level['least'])
        relative = middle + reach, middle + 0.75 * reach
    alone = sign * level['alone'] if 'alone' in level else math.inf
    if relative[0] >= alone:
        relative = alone, alone + leave - enter
    return (enter, leave) if enter >= relative[0] else relative


def eventsOf(kind, series, level):
    values, middle, deviation = series.heldFor(level.get('hold_s', 0))
    enter, leave = levelsOf(kind, level, middle, deviation)
    found = []
    i = 0
    while i < len(values):
        start = i
        while i < len(values) and values[i] is not None and values[i] >= enter:
            i += 1
        if i > start and series.ends[i - 1] - series.times[start] >= level['min_s'] - 1e-3:
            while i < len(values) and values[i] is not None and values[i] >= leave:
                i += 1
            last = i - 1
            while series.values[last] < leave:  # not held any more
                last -= 1
            found.append((kind, start, last))
        elif i == start:
            i += 1
    return found


def shownWithin(series, other):
    """A film: two seconds of another scene instead of the frames that are damaged elsewhere."""
    return Series(series.values[:FIRST] + other.values[:LAST + 1 - FIRST] + series.values[LAST + 1:], series.times,
                  series.ends)


def tryLevels(options):
    """Prints, of every type, the levels that nothing tried beats among the clips for choosing: by medium damage
    found, by false events in clean files, in the clips of cuts, and where one clean clip shows a scene of another."""
    every = [version for version in versions(options) if version.half == 'choose']
    for kind, grid in TRIED.items():
        damaged = [(version, seriesOf(version, kind)) for version in every
                   if version.kind == kind and version.strength == 'medium' and version.isSeen]
        clean = [(version, seriesOf(version, kind)) for version in every if version.kind == 'clean']
        cuts = [seriesOf(version, kind) for version in every if version.kind == 'cuts']
        made = [series for version, series in clean if version.delivery == 'h264']
        films = [shownWithin(one, other) for one in made for other in made if one is not other]
        outcomes = []
        for numbers in itertools.product(*grid.values()):
            level = dict(zip(grid, numbers))
            found = sum(isFound(version.truth[-1], eventsOf(kind, series, level)) for version, series in damaged)
            false = sum(isFalse(event, version.truth) for version, series in clean
                        for event in eventsOf(kind, series, level))
            inCuts = sum(len(eventsOf(kind, series, level)) for series in cuts)
            inFilms = sum(any(overlap(event, (kind, FIRST, LAST)) for event in eventsOf(kind, series, level))
                          for series in films)
            outcomes.append(((-found, false, inCuts, inFilms), level))
        print(f'\n{kind}: found of {len(damaged)}, false, in cuts, in {len(films)} films')
        for outcome, level in sorted(outcomes, key=lambda one: one[0]):
            if not any(other != outcome and all(a <= b for a, b in zip(other, outcome)) for other, _ in outcomes):
                print(f'  {-outcome[0]:3} {outcome[1]:3} {outcome[2]:3} {outcome[3]:4}  {level}')


# --- figures ------------------------------------------------------------------------------------------------


def share(found):
    return f'{sum(found)}/{len(found)}' if found else '-'


def recallTable(every, half):
    """Of what can be seen; the last column: medium damage that cannot, and how much of it is found nevertheless."""
    print(f'| {half} | weak | medium | strong | throughout | medium, lossless | medium, h264 | medium, '
          'no graphics | left out |')
    print('|---|--:|--:|--:|--:|--:|--:|--:|--:|')
    for kind in damages((640, 360)):
        made = [(version, isFound(version.truth[-1], version.events))
                for version in every if version.half == half and version.kind == kind]
        ones = [one for one in made if one[0].isSeen]
        unseen = [found for version, found in made if version.strength == 'medium' and not version.isSeen]
        cells = [share([found for version, found in ones if version.strength == strength])
                 for strength in (*STRENGTHS, 'throughout')]
        medium = [one for one in ones if one[0].strength == 'medium']
        cells += [share([found for version, found in medium if version.delivery == delivery])
                  for delivery in DELIVERIES]
        cells.append(share([found for version, found in medium if version.material != 'graphics']))
        print(f'| {kind} | {" | ".join(cells)} | {f"{len(unseen)} ({sum(unseen)})" if unseen else "0"} |')
    cuts = [(version, isFound(true, version.events)) for version in every
            if version.half == half and version.kind in ('cuts', 'clean') for true in version.truth
            if true[0] == 'scene_cut']
    cells = [share([found for _, found in cuts])] + ['-'] * 2
    cells += [share([found for version, found in cuts if version.delivery == delivery]) for delivery in DELIVERIES]
    print(f'| scene_cut | - | {" | ".join(cells)} | - | 0 |\n')


def falseTable(every):
    kinds = ('original', 'camera', 'photo', 'graphics')
    groups = [(half, kind) for half in ('choose', 'verify') for kind in kinds]
    print('| clean | minutes | false events | a minute | which |\n|---|--:|--:|--:|---|')
    for half, kind in [*groups, ('choose', None), ('verify', None)]:
        clean = [version for version in every if version.kind == 'clean' and version.half == half
                 and kind in (version.material, None)]
        minutes = sum(duration(version) for version in clean) / 60
        false = [event[0] for version in clean for event in version.events if isFalse(event, version.truth)]
        print(f'| {half}, {kind or "all"} | {minutes:.2f} | {len(false)} | {len(false) / minutes:.2f} | '
              f'{counted(false)} |')
    for half in ('choose', 'verify'):
        ones = [event[0] for version in every if version.kind == 'cuts' and version.half == half
                for event in version.events if isFalse(event, version.truth)]
        print(f'\nIn the clips of cuts, {half}: {counted(ones)}')


def counted(kinds):
    return ', '.join(f'{kinds.count(one)} {one}' for one in sorted(set(kinds)))


def duration(version):
    rows = version.frames()
    return float(rows[-1]['time_s']) + float(rows[-1]['duration_s'] or 0) - float(rows[0]['time_s'])


def judge(options):
    every = list(versions(options))
    byFolder = {version.folder: version for version in every}
    for group in {version.folder.parent for version in every}:
        text = run([options.lumascan, 'events', group]).decode()
        for row in csv.DictReader(text.splitlines()):
            version = byFolder[group / f"{row['path']}.lumascan"]
            version.events.append((row['type'], int(row['first_frame']), int(row['last_frame'])))
    for half in ('choose', 'verify'):
        recallTable(every, half)
    falseTable(every)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('step', choices=STEPS)
    parser.add_argument('work', type=pathlib.Path)
    parser.add_argument('lumascan', type=pathlib.Path, nargs='?')
    options = parser.parse_args()
    options.work = options.work.resolve()
    options.lumascan = options.lumascan and options.lumascan.resolve()
    STEPS[options.step](options)


STEPS = {'make': make, 'search': tryLevels, 'judge': judge}

if __name__ == '__main__':
    main()
