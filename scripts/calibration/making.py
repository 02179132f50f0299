"""Makes the corpus: files below WORK/files, each with a record of what is in it (NAME.json).

A file is made again when its recipe has changed: the words of it, and the text of the function that damages.
"""
import concurrent.futures
import dataclasses
import hashlib
import inspect
import json
import os
import pathlib
import shutil
import sys
import tempfile
import time

import numpy

from calibration import clean, damages, deliveries, films, sources, streams

STRENGTHS = ('weak', 'medium', 'strong')
PER_KIND = 4  # contents for each damage, strength and half
VERSION = 1  # of all recipes: raised when something changes that the keys do not see
MOVING = ('combFields', 'combPulldown', 'combPart', 'tear', 'doubledFrames', 'jumps')  # seen where something moves
LATE = ('combPulldown', 'doubledFrames', 'jumps')  # behind the damage, frames are others than without it
STREAMS = ('lostMpeg2', 'lostH264', 'lostConcealed', 'missingFrames')


@dataclasses.dataclass
class Recipe:
    """A file to be made. `kind` is clean or the damage's name."""
    content: clean.Content
    kind: str
    strength: str
    delivery: str

    def name(self):
        return '.'.join([self.content.half, self.kind, self.strength, self.content.name, self.delivery])

    def level(self):
        return STRENGTHS.index(self.strength)


def cleanRecipes(contents):
    """Each once: minutes are counted once. Films are clean as they came, and need no second time."""
    return [Recipe(content, 'clean', 'none', deliveryOf('clean', content.name)) for content in contents
            if content.material != 'film']


def deliveryOf(*words):
    return str(clean.generator('delivery', *words).choice(deliveries.DELIVERIES, p=(0.4, 0.2, 0.2, 0.2)))


def damagedRecipes(contents):
    made = []
    for kind in (*damages.DAMAGES, *STREAMS):
        for half in ('choose', 'verify'):
            pool = [content for content in contents if content.half == half and content.isDamaged
                    and not (kind in MOVING and 'slow' in content.words)]
            order = clean.generator('pool', kind, half).permutation(len(pool))
            for level, strength in enumerate(STRENGTHS):
                for i in range(PER_KIND):
                    content = pool[order[(level * PER_KIND + i) % len(pool)]]
                    if kind in ('lostMpeg2', 'lostH264'):
                        made.append(Recipe(content, kind, strength, 'received'))
                        continue
                    first = deliveryOf(kind, strength, content.name)
                    made.append(Recipe(content, kind, strength, first))
                    if i == 0:  # a second delivery for each fourth
                        others = [one for one in deliveries.DELIVERIES if one != first]
                        made.append(Recipe(content, kind, strength, others[level % len(others)]))
    return made


def spanFor(recipe):
    """Where the damage is: anywhere, one and a half to four seconds, some at the very start or end."""
    content = recipe.content
    rng = clean.generator('span', recipe.kind, recipe.strength, content.name)
    length = int(content.fps * rng.uniform(1.5, 4))
    first = int(rng.uniform(0.12, 0.6) * content.count)
    place = rng.random()
    if place < 0.08:
        first = 0
    elif place > 0.92:
        first = content.count - length
    if recipe.kind.startswith('freeze') or recipe.kind in STREAMS or recipe.kind == 'jumps':
        first = min(max(first, content.fps), content.count - length - 2 * content.fps)
    return first, min(first + length - 1, content.count - 1)


def key(*words):
    return hashlib.sha1(repr((VERSION, *words)).encode()).hexdigest()[:16]


def contentKey(content):
    return key(content.name, content.words, content.size, content.fps, content.count, content.half)


def recipeKey(recipe):
    function = damages.DAMAGES.get(recipe.kind)
    text = inspect.getsource(function) if function else inspect.getsource(streams) if recipe.kind in STREAMS else ''
    content = recipe.content
    return key(contentKey(content), recipe.name(), text, deliveries.coded(recipe.delivery, content.size, content.fps)
               if recipe.delivery != 'received' else '')


def isMade(record, wanted):
    if not record.is_file():
        return False
    known = json.loads(record.read_text(encoding='utf-8'))
    return known['key'] == wanted and (record.parent / known['file']).is_file()


def keep(record, fields):
    """Written last and at once: where it stands, the film stands too."""
    part = record.with_name(f'{record.name}-{os.getpid()}.part')
    part.write_text(json.dumps(fields), encoding='utf-8')
    os.replace(part, record)


def master(work, content):
    """The clean film and its truth. What is damaged often is kept as it is in memory: to decode it each time would take
    longer than to damage it. These files are some 5 GB, and may be deleted."""
    folder = work / 'masters'
    record = folder / f'{content.name}.json'
    path = folder / f'{content.name}.npy'
    if isMade(record, contentKey(content)):
        known = json.loads(record.read_text(encoding='utf-8'))
        return films.Film(numpy.load(path), content.size, content.fps), known['truth']
    film, truth = content.make(content.size, content.fps, content.count, clean.generator('make', content.name))
    if content.isDamaged:
        part = folder / f'{content.name}-{os.getpid()}.part'
        with open(part, 'wb') as file:
            numpy.save(file, film.frames)
        os.replace(part, path)
        keep(record, {'key': contentKey(content), 'file': path.name, 'truth': truth})
    return film, truth


def makeOne(work, recipe):
    content = recipe.content
    folder = work / 'files'
    record = folder / f'{recipe.name()}.json'
    wanted = recipeKey(recipe)
    if isMade(record, wanted):
        return 0
    begun = time.monotonic()
    film, truth = master(work, content)
    fields = {'key': wanted, 'name': recipe.name(), 'half': content.half, 'source': content.source,
              'material': content.material, 'delivery': recipe.delivery, 'kind': recipe.kind,
              'strength': recipe.strength, 'fps': content.fps, 'size': content.size, 'truth': [], 'error': None,
              'cuts': truth['cuts'], 'also': truth['also']}
    filters = 'null'
    with tempfile.TemporaryDirectory(dir=work) as scratch:
        if recipe.kind in damages.DAMAGES:
            first, last = spanFor(recipe)
            true = film.y.copy()
            hit = damages.DAMAGES[recipe.kind](film, first, last, recipe.level(), rngFor(recipe))
            fields['truth'] = [(first, last)] if hit is None else [(int(a), int(b)) for a, b in hit]
            # Where frames come late, how much moves from one to the next says what can be seen.
            isLate = recipe.kind in LATE
            fields['error'] = errorAt(true[1:] if isLate else film.y, true, fields['truth'])
        elif recipe.kind == 'missingFrames':
            filters, fields['truth'] = streams.gaps(*spanFor(recipe), recipe.level())
        elif recipe.kind in STREAMS:
            received, film = lost(pathlib.Path(scratch), recipe, film, fields)
            if recipe.delivery == 'received':
                path = folder / f'{recipe.name()}.ts'
                os.replace(received, path)
        if recipe.delivery != 'received':
            codec, extension = deliveries.coded(recipe.delivery, content.size, content.fps)
            path = folder / f'{recipe.name()}.{extension}'
            part = pathlib.Path(scratch) / f'film.{extension}'
            films.writeFilm(film, part, codec, filters)
            os.replace(part, path)
    fields.update(file=path.name, seconds=len(film) / content.fps, frames=len(film))
    keep(record, fields)
    return time.monotonic() - begun


def errorAt(luma, true, intervals):
    """Mean squared error of the damaged frames, before they are coded."""
    errors = [numpy.mean((luma[n].astype(numpy.float32) - true[n]) ** 2)
              for first, last in intervals for n in range(first, min(last + 1, len(luma)))]
    return float(numpy.mean(errors)) if errors else 0.0


def rngFor(recipe):
    return clean.generator('damage', recipe.kind, recipe.strength, recipe.content.name)


def lost(scratch, recipe, film, fields):
    """The stream that came through, and what a receiver shows of it."""
    rng = rngFor(recipe)
    first, last = spanFor(recipe)
    codec = {'lostMpeg2': 'mpeg2', 'lostH264': 'h264'}.get(recipe.kind, ('mpeg2', 'h264')[int(rng.integers(2))])
    sent, received = scratch / 'sent.ts', scratch / 'received.ts'
    streams.codedStream(film, codec, sent)
    received.write_bytes(streams.withoutPackets(sent.read_bytes(), rng, streams.LOST[recipe.level()],
                                                first / len(film), last / len(film)))
    damaged, true = streams.decoded(received, film.size), streams.decoded(sent, film.size)
    if recipe.delivery == 'received':
        wrong = streams.differing(damaged, true, film.size)
        fields['truth'] = streams.runs(wrong)
        fields['wrongPts'] = [time for time, isWrong in zip(damaged[0], wrong) if isWrong]
        return received, film
    shown, wrong = streams.concealed(damaged, true, film)
    fields['truth'] = streams.runs(wrong)
    return received, shown


def keepOriginals(work):
    """Real files as they came, each a copy, so that all files lie together."""
    for path, (half, also) in sources.ORIGINALS.items():
        target = work / 'files' / f'original-{path.name}'
        record = work / 'files' / f'original-{path.name}.json'
        wanted = key(str(path), path.stat().st_size, also, 'still')
        if isMade(record, wanted):
            continue
        shutil.copy2(path, target)  # with its time: results of it stay valid
        still = [('freeze', 0, 1 << 30)] if path.stem in sources.STILL else stillIn(path)
        keep(record, {'key': wanted, 'name': target.name, 'file': target.name, 'half': half, 'source': path.name,
                      'material': 'original', 'delivery': 'original', 'kind': 'clean', 'strength': 'none', 'fps': None,
                      'size': None, 'truth': [], 'cuts': [], 'frames': None, 'seconds': None,
                      'isCutsKnown': any(kind == 'scene_cut' for kind, *_ in also),
                      'also': also + still})


def stillIn(path):
    """Where a real film stands still for four frames or more, to the last bit: a freeze is true there."""
    lines = films.ffmpeg('-i', path, '-map', '0:v:0', '-vf', 'format=gray', '-fps_mode', 'passthrough', '-f',
                         'framemd5', '-').decode().splitlines()
    sums = [line.split(',')[-1] for line in lines if not line.startswith('#')]
    same = [n > 0 and sums[n] == sums[n - 1] for n in range(len(sums))]
    return [('freeze', first - 1, last) for first, last in streams.runs(same) if last - first >= 2]


def sampleOf(contents, step):
    """All recipes, in an order by chance: what is made first is a fair sample of the rest. Or one in `step` of the
    damaged files, and three times as many of the clean ones."""
    clear, damaged = (shuffled(some) for some in (cleanRecipes(contents), damagedRecipes(contents)))
    return clear[:max(1, 3 * len(clear) // (step + 2))] + damaged[:len(damaged) // step]


def shuffled(some):
    return [some[i] for i in clean.generator('order').permutation(len(some))]


def removeStale(work, contents):
    """What recipes of before have left: it would be measured and judged."""
    known = {recipe.name() for recipe in (*cleanRecipes(contents), *damagedRecipes(contents))}
    known |= {f'original-{path.name}' for path in sources.ORIGINALS}
    for record in (work / 'files').glob('*.json'):
        fields = json.loads(record.read_text(encoding='utf-8'))
        if fields['name'] not in known:
            record.unlink()
            (work / 'files' / fields['file']).unlink(missing_ok=True)


def makeNamed(job):
    """In a process of its own, which finds the recipe by its name: functions made on the way cannot be sent."""
    work, name = job
    return makeOne(work, RECIPES[name])


RECIPES = {}


def make(work, step=1, jobs=2):
    missing = sources.missingFiles()
    if missing:
        sys.exit(f'{missing[0]} is missing: scripts/setup.sh long')
    for folder in ('files', 'masters'):
        (work / folder).mkdir(parents=True, exist_ok=True)
    contents = clean.contents()
    wanted = sampleOf(contents, step)
    RECIPES.update({recipe.name(): recipe for recipe in wanted})
    removeStale(work, contents)
    keepOriginals(work)
    begun, done = time.monotonic(), 0
    failed = []
    with concurrent.futures.ProcessPoolExecutor(jobs) as pool:
        # Those of one master one after the other would wait for each other: it is made by whoever comes first.
        futures = {pool.submit(makeNamed, (work, name)): name for name in RECIPES}
        for future in concurrent.futures.as_completed(futures):
            done += 1
            try:
                future.result()
            except Exception as error:  # one clip that cannot be made must not end the others
                failed.append(f'{futures[future]}: {error!r}')
                print(failed[-1], file=sys.stderr, flush=True)
            if done % 50 == 0:
                print(f'{done} of {len(futures)} files, {time.monotonic() - begun:.0f} s', flush=True)
    if failed:
        sys.exit(f'{len(failed)} files could not be made')
