"""Counts what was found and what is false, and prints it as tables."""
import collections
import dataclasses
import sys

from calibration import making, matching, measuring

UNSEEN = 6.5  # mean squared error of the damaged frames, 40 dB: combing of what stands still is no damage
NEAR = 1.0  # seconds around damage in which no event is false
AT_CUT = 1  # frames by which a cut may be missed


@dataclasses.dataclass
class Event:
    type: str
    first: int
    last: int
    severity: str = 'warn'


@dataclasses.dataclass
class Judged:
    """A clip with the events that somebody found in it."""
    clip: measuring.Clip
    events: list
    seconds: float
    frameSeconds: float
    verdict: str
    truth: list  # in the numbers of the frames that were measured


def judged(clip):
    result = clip.result()
    analysis = result.get('analysis') or {}
    seconds = (analysis.get('end_s') or 0) - (analysis.get('start_s') or 0)
    events = [Event(one['type'], one['first_frame'], one['last_frame'], one['severity']) for one in result['events']]
    return Judged(clip, events, seconds, seconds / max(analysis.get('frames') or 1, 1), result['verdict'],
                  truthOf(clip))


def truthOf(clip):
    """What was received is known by its timestamps: another decoder may leave out other frames."""
    if 'wrongPts' not in clip.fields:
        return clip.truth
    wrong = set(clip.fields['wrongPts'])
    found = []
    for n, row in enumerate(clip.rows()):
        if row['pts'] and int(row['pts']) in wrong:
            if found and found[-1][1] == n - 1:
                found[-1][1] = n
            else:
                found.append([n, n])
    return found


def framesOf(intervals):
    return {n for first, last in intervals for n in range(first, last + 1)}


def coverage(one, types, events=None):
    """Share of the true frames at which there is an event of these types; None where nothing is wrong. Jumps are
    between two frames, and either may be named."""
    truth = framesOf(one.truth)
    if not truth:
        return None
    reach = 1 if one.clip.kind == 'jumps' else 0
    covered = set()
    for event in one.events if events is None else events:
        if event.type in types and event.last >= min(truth) - reach and event.first <= max(truth) + reach:
            covered |= truth & set(range(event.first - reach, min(event.last, max(truth)) + reach + 1))
    return len(covered) / len(truth)


def isFound(one, events=None):
    share = coverage(one, matching.finds(one.clip.kind), events)
    return None if share is None else share >= 0.5


def touches(event, first, last, margin=0):
    return event.first <= last + margin and event.last >= first - margin


def isFalse(one, event):
    clip = one.clip
    if event.type == 'scene_cut':
        known = clip.fields.get('isCutsKnown', True)
        true = clip.cuts + [first for kind, first, _ in clip.also if kind == 'scene_cut']
        if not known or any(abs(event.first - cut) <= AT_CUT for cut in true):
            return False
    if any(kind == event.type and touches(event, first, last) for kind, first, last in clip.also):
        return False
    if clip.kind == 'clean':
        return True
    margin = NEAR / max(one.frameSeconds, 1e-3)
    if event.type in matching.excused(clip.kind):
        return False
    return not any(touches(event, first, last, margin) for first, last in one.truth)


def cleanSeconds(one):
    """Of a damaged clip, what lies outside the damage by more than NEAR."""
    if one.clip.kind == 'clean':
        return one.seconds
    near = framesOf([(int(first - NEAR / one.frameSeconds), int(last + NEAR / one.frameSeconds))
                     for first, last in one.truth]) if one.frameSeconds else set()
    return max(one.seconds - len(near) * one.frameSeconds, 0)


def ratio(flags):
    flags = [flag for flag in flags if flag is not None]
    return f'{sum(flags)}/{len(flags)}' if flags else '-'


def percent(part, whole):
    return f'{100 * part / whole:.0f} %' if whole else '-'


def table(header, rows):
    print(f'| {" | ".join(header)} |\n|---|{"--:|" * (len(header) - 1)}')
    for row in rows:
        print(f'| {" | ".join(str(cell) for cell in row)} |')
    print()


def isSeen(clip):
    error = clip.fields.get('error')
    return error is None or error >= UNSEEN


def recallTable(every):
    damaged = [(one, isFound(one)) for one in every if one.clip.kind != 'clean' and isSeen(one.clip)]
    rows = []
    for kind in dict.fromkeys((*matching.FINDS, *sorted({one.clip.kind for one, _ in damaged}))):
        own = [(one, found) for one, found in damaged if one.clip.kind == kind]
        if own:
            unseen = sum(one.clip.kind == kind and not isSeen(one.clip) for one in every)
            rows.append([kind, *(ratio([found for one, found in own if one.clip.strength == strength])
                                 for strength in making.STRENGTHS), ratio([found for _, found in own]), unseen])
    rows.append(['all', *(ratio([found for one, found in damaged if one.clip.strength == strength])
                          for strength in making.STRENGTHS), ratio([found for _, found in damaged]), ''])
    table(['found', *making.STRENGTHS, 'all', 'unseen, left out'], rows)


def cutTable(every):
    """True cuts of the films and slides."""
    rows = []
    for material in ('cuts', 'slides'):
        own = [one for one in every if one.clip.material == material and one.clip.kind == 'clean']
        found = [any(event.type == 'scene_cut' and abs(event.first - cut) <= AT_CUT for event in one.events)
                 for one in own for cut in one.clip.cuts]
        false = sum(event.type == 'scene_cut' and isFalse(one, event) for one in own for event in one.events)
        rows.append([material, ratio(found), false])
    table(['scene cuts', 'found', 'false'], rows)


def counted(events):
    counts = collections.Counter(event.type for event in events)
    return ', '.join(f'{count} {kind}' for kind, count in counts.most_common())


def materialTable(every):
    clean = [one for one in every if one.clip.kind == 'clean']
    rows = []
    for material in (*sorted({one.clip.material for one in clean}), None):
        own = [one for one in clean if material in (one.clip.material, None)]
        false = [event for one in own for event in one.events if isFalse(one, event)]
        minutes = sum(one.seconds for one in own) / 60
        verdicts = collections.Counter(one.verdict for one in own)
        rows.append([material or 'all', len(own), f'{minutes:.1f}', len(false),
                     f'{len(false) / max(minutes, 1e-9):.2f}', percent(verdicts['fail'], len(own)),
                     percent(verdicts['fail'] + verdicts['attention'], len(own)), counted(false)])
    table(['clean', 'files', 'minutes', 'false', 'a minute', 'fail', 'fail or attention', 'which'], rows)


def typeTable(every):
    groups = {True: [one for one in every if one.clip.kind == 'clean'],
              False: [one for one in every if one.clip.kind != 'clean']}
    minutes = {key: sum(map(cleanSeconds, group)) / 60 or 1e-9 for key, group in groups.items()}
    false = {key: [event for one in group for event in one.events if isFalse(one, event)]
             for key, group in groups.items()}
    rows = []
    for kind in sorted({event.type for one in every for event in one.events}):
        row = [kind, ', '.join(sorted({event.severity for one in every for event in one.events if event.type == kind}))]
        for key in (True, False):
            count = sum(event.type == kind for event in false[key])
            row += [count, f'{count / minutes[key]:.2f}']
        rows.append(row)
    row = ['all', '']
    for key in (True, False):
        row += [len(false[key]), f'{len(false[key]) / minutes[key]:.2f}']
    rows.append(row)
    print(f'{minutes[True]:.1f} minutes are clean, {minutes[False]:.1f} lie outside the damage of damaged files.\n')
    table(['false', 'severity', 'in clean files', 'a minute', 'beside damage', 'a minute'], rows)


def failTable(every):
    """Of the events that fail a file, which are true: of a type that its damage may have, at the damage."""
    counts = collections.defaultdict(lambda: [0, 0])
    for one in every:
        margin = NEAR / max(one.frameSeconds, 1e-3)
        for event in one.events:
            if event.severity == 'fail':
                isTrue = any(kind == event.type and touches(event, first, last) for kind, first, last in one.clip.also)
                isTrue |= event.type in matching.excused(one.clip.kind) and any(
                    touches(event, first, last, margin) for first, last in one.truth)
                counts[event.type][isTrue] += 1
    rows = [[kind, true, true + false, percent(true, true + false)] for kind, (false, true) in sorted(counts.items())]
    false, true = (sum(pair[i] for pair in counts.values()) for i in (0, 1))
    rows.append(['all', true, true + false, percent(true, true + false)])
    table(['events of severity fail', 'true', 'all', 'share'], rows)


def receivedTable(every):
    rows = []
    for kind in ('lostMpeg2', 'lostH264'):
        for strength in making.STRENGTHS:
            own = [one for one in every if one.clip.kind == kind and one.clip.strength == strength]
            bad = good = badHit = goodHit = 0
            for one in own:
                truth = framesOf(one.truth)
                count = round(one.seconds / one.frameSeconds) if one.frameSeconds else 0
                said = framesOf([(event.first, event.last) for event in one.events
                                 if event.type in matching.STREAM_TYPES]) & set(range(count))
                bad, badHit = bad + len(truth), badHit + len(truth & said)
                good, goodHit = good + count - len(truth), goodHit + len(said - truth)
            rows.append([kind, strength, len(own), bad, percent(badHit, bad), good, percent(goodHit, good)])
    table(['received', 'strength', 'files', 'damaged frames', 'told', 'undamaged frames', 'told as damaged'], rows)


def judge(work, results, half, withPeers):
    every = [judged(clip) for clip in measuring.corpus(work, results, half)]
    if not every:
        sys.exit(f'{results} has no results: calibrate.py measure')
    print(f'{half}: {len(every)} files, {sum(one.clip.kind == "clean" for one in every)} of them clean\n')
    recallTable(every)
    cutTable(every)
    materialTable(every)
    typeTable(every)
    failTable(every)
    receivedTable(every)
    if withPeers:
        from calibration import peers  # only here: it is slow, and nothing else needs it
        peers.compare(work, every)
