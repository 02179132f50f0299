"""FFmpeg's own detectors on the same files, counted in the same way.

Each file is read once; the values of all detectors are kept in WORK/peers, and levels are tried on them.
"""
import concurrent.futures
import json
import os
import re

from calibration import films, judging, matching

SHORTEST = 0.3  # seconds that a value must stay beyond its level
BRIDGED = 0.2  # seconds between two stretches that are one

# Filters that have their levels inside: name, filter, settings.
INSIDE = {
    'blackdetect': ('blackdetect=d=0.2:{}', ('pix_th=0.06:pic_th=0.98', 'pix_th=0.1:pic_th=0.98',
                                                'pix_th=0.15:pic_th=0.9')),
    'freezedetect': ('freezedetect=d=0.3:{}', ('n=-60dB', 'n=-50dB', 'n=-42dB')),
    'cropdetect': ('cropdetect=skip=0:reset=1:round=2:{}', ('limit=0.07', 'limit=0.094', 'limit=0.14')),
    'idet': ('idet={}', ('intl_thres=1.04', 'intl_thres=1.2', 'intl_thres=1.6')),
}

# Values of each frame, all in one chain; photosensitivity is the last, since it changes the picture.
VALUES = 'bitplanenoise=bitplane=3,scdet=threshold=100,photosensitivity=bypass=1'
# What takes longer than all the rest together, and is meant for stretches: of each third frame, held for the next two.
STEP = 3
SLOW = f"select='not(mod(n,{STEP}))',signalstats,blockdetect,blurdetect"

# Name: the type of event that it stands for, its value, whether high is bad, levels.
LEVELS = {
    'blockdetect': ('blockiness', 'lavfi.block', True, (1.3, 1.6, 2, 3, 5, 8)),
    'blurdetect': ('blur', 'lavfi.blur', True, (4, 5, 6, 7, 8, 10, 13)),
    'bitplanenoise': ('noise', 'lavfi.bitplanenoise.0.3', True, (0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9)),
    'photosensitivity': ('flicker', 'lavfi.photosensitivity.badness', True, (0.1, 0.3, 0.5, 1, 2)),
    'signalstats bright': ('over_exposure', 'lavfi.signalstats.YAVG', True, (140, 155, 170, 185, 200)),
    'signalstats dark': ('under_exposure', 'lavfi.signalstats.YAVG', False, (25, 35, 45, 60, 75)),
    'signalstats range': ('low_contrast', 'range', False, (25, 40, 55, 70, 90, 110)),
    'scdet': ('scene_cut', 'lavfi.scd.score', True, (5, 8, 10, 14, 20)),
}


def readMetadata(path):
    """For each frame its time and what filters wrote to it."""
    times, values = [], []
    for line in path.read_text(encoding='utf-8', errors='replace').splitlines():
        head = re.match(r'frame:\d+ +pts:\S+ +pts_time:(\S+)', line)
        if head:
            times.append(float(head[1]) if head[1] != 'NOPTS' else (times[-1] if times else 0.0))
            values.append({})
        elif '=' in line and values:
            name, _, value = line.partition('=')
            values[-1][name] = value
    return times, values


def peerValues(work, path):
    """All detectors' values of one file: made once."""
    record = work / 'peers' / f'{path.name}.json'
    if record.is_file() and record.stat().st_mtime >= path.stat().st_mtime:
        return json.loads(record.read_text(encoding='utf-8'))
    branches = [(f'{name} {setting}', text.format(setting)) for name, (text, settings) in INSIDE.items()
                for setting in settings]
    branches += [('slow', SLOW), ('values', VALUES)]  # the last one's times are those of all frames
    parts = [record.with_name(f'{record.name}.{i}.part') for i in range(len(branches))]
    graph = f"[0:v:0]split={len(branches)}{''.join(f'[i{i}]' for i in range(len(branches)))}"
    for i, (_, text) in enumerate(branches):
        graph += f';[i{i}]{text},metadata=print:file={parts[i]}[o{i}]'
    maps = [word for i in range(len(branches)) for word in ('-map', f'[o{i}]')]
    films.ffmpeg('-i', path, '-filter_complex', graph, *maps, '-fps_mode', 'passthrough', '-f', 'null', '-')
    known = {}
    for (name, _), part in zip(branches, parts):
        times, values = readMetadata(part)
        known[name] = [{key: value for key, value in one.items() if isWanted(key)} for one in values]
        known['times'] = times
        part.unlink()
    for n, values in enumerate(known['values']):
        values.update(known['slow'][n // STEP])
    del known['slow']
    text = json.dumps(known)
    part = record.with_suffix('.part')
    part.write_text(text, encoding='utf-8')
    os.replace(part, record)
    return json.loads(text)


def isWanted(key):
    """Of some forty values a frame."""
    return key in WANTED or key.startswith(('lavfi.black_', 'lavfi.freezedetect'))


WANTED = {value for _, value, *_ in LEVELS.values()} | {
    'lavfi.signalstats.YLOW', 'lavfi.signalstats.YHIGH', 'lavfi.idet.multiple.current_frame',
    *(f'lavfi.cropdetect.{side}' for side in ('x1', 'x2', 'y1', 'y2'))}


def stretches(flags, times):
    """Runs of true flags that last, over short gaps."""
    step = (times[-1] - times[0]) / max(len(times) - 1, 1) if times else 0
    found = []
    for n, flag in enumerate(flags):
        if not flag:
            continue
        if found and times[n] - times[found[-1][1]] <= BRIDGED + step:
            found[-1][1] = n
        else:
            found.append([n, n])
    return [(a, b) for a, b in found if times[b] - times[a] + step >= SHORTEST]


def number(values, name):
    try:
        return float(values[name])
    except (KeyError, ValueError):
        return None


def spoken(known, branch, start, end):
    """Events that a filter tells by the times at which they begin and end."""
    times, found, begun = known['times'], [], None
    for values in known[branch]:
        if start in values:
            begun = float(values[start])
        if end in values and begun is not None:
            found.append((begun, float(values[end])))
            begun = None
    if begun is not None:
        found.append((begun, times[-1] + 1))
    intervals = []
    for a, b in found:
        inside = [n for n, time in enumerate(times) if a - 1e-3 <= time < b - 1e-3]
        if inside:
            intervals.append((inside[0], inside[-1]))
    return intervals


def cropped(values, size, axis):
    """Whether three hundredths of the picture or more are bars."""
    low, high = (number(values, f'lavfi.cropdetect.{name}') for name in (('y1', 'y2'), ('x1', 'x2'))[axis])
    whole = size[1 - axis]
    return low is not None and high is not None and high > low and low + whole - 1 - high >= 0.03 * whole


def eventsOf(known, detector, setting, size):
    branch = f'{detector} {setting}'
    if detector == 'blackdetect':
        found = {'black': spoken(known, branch, 'lavfi.black_start', 'lavfi.black_end')}
    elif detector == 'freezedetect':
        found = {'freeze': spoken(known, branch, 'lavfi.freezedetect.freeze_start', 'lavfi.freezedetect.freeze_end')}
    elif detector == 'cropdetect':
        found = {kind: stretches([cropped(values, size, axis) for values in known[branch]], known['times'])
                 for axis, kind in enumerate(('letterbox', 'pillarbox'))}
    elif detector == 'idet':
        found = {'combing': stretches([values.get('lavfi.idet.multiple.current_frame') in ('tff', 'bff')
                                       for values in known[branch]], known['times'])}
    else:
        kind, name, isHigh, _ = LEVELS[detector]
        read = [number(values, name) if name != 'range' else rangeOf(values) for values in known['values']]
        flags = [value is not None and (value >= setting if isHigh else value <= setting) for value in read]
        found = {kind: [(n, n) for n, flag in enumerate(flags) if flag] if kind == 'scene_cut' else
                 stretches(flags, known['times'])}
    return [judging.Event(kind, first, last) for kind, intervals in found.items() for first, last in intervals]


def rangeOf(values):
    low, high = number(values, 'lavfi.signalstats.YLOW'), number(values, 'lavfi.signalstats.YHIGH')
    return None if low is None or high is None else high - low


def typesOf(detector):
    return {'blackdetect': {'black'}, 'freezedetect': {'freeze'}, 'cropdetect': {'letterbox', 'pillarbox'},
            'idet': {'combing'}}.get(detector) or {LEVELS[detector][0]}


def score(clips, eventsFor, types):
    """Damage of these types in all strengths, and cuts where they are meant: (found, of, false events, clean minutes,
    clean files with a false event, clean files)."""
    found = of = false = falseFiles = cleanFiles = 0
    minutes = sum(one.seconds for one in clips if one.clip.kind == 'clean') / 60
    for one in clips:
        events = [event for event in eventsFor(one) if event.type in types]
        if one.clip.kind == 'clean':
            own = sum(judging.isFalse(one, event) for event in events)
            false, falseFiles, cleanFiles = false + own, falseFiles + bool(own), cleanFiles + 1
            if types == {'scene_cut'}:
                hits = [any(abs(event.first - cut) <= judging.AT_CUT for event in events) for cut in one.clip.cuts]
                found, of = found + sum(hits), of + len(hits)
        elif types & matching.finds(one.clip.kind) and judging.isSeen(one.clip):
            isFound = judging.isFound(one, events)
            found, of = found + bool(isFound), of + (isFound is not None)
    return found, of, false, minutes, falseFiles, cleanFiles


def sizeOf(one):
    entry = one.clip.result()['input']
    return entry['width'], entry['height']


def compare(work, every, jobs=2):
    (work / 'peers').mkdir(exist_ok=True)
    # What was received damaged is not compared: these detectors look at pictures only.
    clips = [one for one in every if one.clip.delivery != 'received']
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        list(pool.map(lambda one: peerValues(work, one.clip.path), clips))
    sizes = {one.clip.name: sizeOf(one) for one in clips}
    settings = {**{name: own for name, (_, own) in INSIDE.items()},
                **{name: own for name, (*_, own) in LEVELS.items()}}
    scores = {(detector, setting): [] for detector, own in settings.items() for setting in own}
    for one in clips:  # a file's values at a time: all of them together are large
        known = peerValues(work, one.clip.path)
        for detector, setting in scores:
            events = eventsOf(known, detector, setting, sizes[one.clip.name])
            scores[detector, setting].append(score([one], lambda _, found=events: found, typesOf(detector)))
    rows = []
    for detector, own in settings.items():
        ours = score(clips, lambda one: one.events, typesOf(detector))
        theirs = [(setting, tuple(map(sum, zip(*scores[detector, setting])))) for setting in own]
        below = [one for one in theirs if one[1][2] <= ours[2]]
        near = max(below, key=lambda one: (one[1][2], one[1][0])) if below else min(theirs, key=lambda one: one[1][2])
        best = max(theirs, key=lambda one: advantage(one[1]))
        rows.append([', '.join(sorted(typesOf(detector))), *told(ours), detector, near[0], *told(near[1]), best[0],
                     *told(best[1])])
    judging.table(['type', 'lumascan', 'false a minute', 'peer', 'at most as false, or least', 'found',
                   'false a minute', 'best found', 'found', 'false a minute'], rows)


def advantage(score):
    """Share of what is found less share of the clean files in which something false is: 0 for what always speaks."""
    found, of, _, _, falseFiles, cleanFiles = score
    return found / max(of, 1) - falseFiles / max(cleanFiles, 1)


def told(score):
    found, of, false, minutes, *_ = score
    return f'{found}/{of}', f'{false / max(minutes, 1e-9):.2f}'
