"""Has a lumascan measure the corpus, and reads what it found.

Results lie in WORK/results/NAME, NAME being made of the program's own bytes: another build's are beside them.
"""
import csv
import dataclasses
import hashlib
import json
import pathlib
import subprocess
import sys

from calibration import films


@dataclasses.dataclass
class Clip:
    """A file of the corpus: what it is, what is wrong in it (frames, first and last of each run), where its results
    are."""
    name: str
    half: str
    source: str
    material: str  # original for real files as they came
    delivery: str
    kind: str  # clean, or the damage's name
    strength: str
    truth: list
    cuts: list  # frames from which on another scene is shown
    also: list  # what is truly in clean material: (type, first, last)
    fields: dict  # all that was kept
    path: pathlib.Path
    framesCsv: pathlib.Path
    resultJson: pathlib.Path

    def result(self):
        return json.loads(self.resultJson.read_text(encoding='utf-8'))

    def rows(self):
        with open(self.framesCsv, encoding='utf-8', newline='') as file:
            return list(csv.DictReader(file))


def resultsOf(work, lumascan):
    return work / 'results' / hashlib.sha1(lumascan.read_bytes()).hexdigest()[:10]


def records(work):
    return [json.loads(path.read_text(encoding='utf-8')) for path in sorted((work / 'files').glob('*.json'))]


def corpus(work, results, half=None):
    """All clips that were made and measured, of one half or of both."""
    for fields in records(work):
        folder = results / f"{fields['file']}.lumascan"
        if (half is None or fields['half'] == half) and (folder / 'result.json').is_file():
            own = {name: fields[name] for name in ('name', 'half', 'source', 'material', 'delivery', 'kind', 'strength',
                                                   'truth', 'cuts', 'also')}
            yield Clip(**own, fields=fields, path=work / 'files' / fields['file'], framesCsv=folder / 'frames.csv',
                       resultJson=folder / 'result.json')


def measure(work, lumascan, results):
    """Measures what has no result yet. Damaged files make the program say so by its exit status 3."""
    names = [fields['file'] for fields in records(work)]
    if not names:
        sys.exit(f'{work} has no files: calibrate.py make')
    results.mkdir(parents=True, exist_ok=True)
    done = subprocess.run([lumascan, 'scan', *names, '-o', results, '-j', '2', '--formats', 'csv', '--thumbs', 'none',
                           '-q'], cwd=work / 'files', check=False)
    if done.returncode not in (0, 3):
        sys.exit(f'{lumascan} ended with {done.returncode}')
    print(f'{len(names)} files, results in {results}, {films.run([lumascan, "--version"]).decode().split()[1]}')
