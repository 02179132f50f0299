#!/usr/bin/env python3
"""Makes one small wrong change at a time in src/ and scan/ and tells which ones the tests do not notice.

usage: scripts/mutation.py [--jobs N] [--only TEXT] [--sample N] [--again FILE] [--report FILE] [--list]

A change is a comparison moved by one or turned round, a constant one off, an operator swapped, a
negation or a statement dropped. Each is made alone in a copy of the project, and tested until the first
test fails. Those of src/ are built one by one, and tested at last with the address and undefined behaviour
sanitizers; of scan/ a sample is taken, and most of it built at once and switched on in turn, and those of the
pages' scripts are made in finished pages. A change that does not compile, or of src/ compiles to the same
machine code, is none.

  --only TEXT    changes in files whose path contains TEXT
  --sample N     so many changes of scan/, the same ones every time (720)
  --again FILE   take over what an earlier report, even an unfinished one, says of all changes but those that
                 survived without a reason
  --report FILE  where the table of all changes goes, as they are tested (build/mutation/report.tsv)
  --list         print the changes, make none; fails when a change that tests/mutation/equivalent.tsv names
                 is none of them

tests/mutation/equivalent.tsv names the changes that no test can see, with the reason. The exit status is
1 when a change that is not named there survives, when one that is named there does not, and, of a run
over all files, when fewer than 95 % of the changes of src/ that can be seen are caught, or 92 % of scan/'s.
"""

import argparse
import collections
import csv
import hashlib
import os
import pathlib
import subprocess
import sys

from mutants import oneByOne, pages, switched
from mutants.changes import ROOT, allChanges, describe

WORK = ROOT / "build" / "mutation"
EQUIVALENT = ROOT / "tests" / "mutation" / "equivalent.tsv"
LEAST_CAUGHT = {"src/": 0.95, "scan/": 0.92}


def readTable(path):
    with open(path, newline="") as file:
        return list(csv.reader(file, delimiter="\t", quoting=csv.QUOTE_NONE, quotechar=None))


def subject(row):
    """What a row of the report is about, wherever in its file that has moved."""
    return row[2], row[5], row[6]


def explainedSubjects():
    return {tuple(row[:3]) for row in readTable(EQUIVALENT)[1:]}


def isCaught(row):
    return row[0] == "caught"


def shareCaught(rows):
    return sum(map(isCaught, rows)) / len(rows) if rows else 1.0


def visible(rows):
    """Without those that no test can see."""
    explained = explainedSubjects()
    return [row for row in rows if isCaught(row) or subject(row) not in explained]


def testerOf(change):
    if change.path.endswith(".js"):
        return pages
    return oneByOne if change.path.startswith("src/") else switched


def sampled(changes, count):
    """All of src/, and of scan/ some: those with the least hashes, so that other changes do not choose others."""
    def hashOf(change):
        return hashlib.sha256("\t".join(subject(["", "", *describe(change)])).encode()).digest()

    ofScan = sorted((change for change in changes if change.path.startswith("scan/")), key=hashOf)
    chosen = set(ofScan[:count])
    return [change for change in changes if change.path.startswith("src/") or change in chosen]


def summarise(rows, isWhole):
    """Prints a line per file and the total; returns the exit status."""
    explained = explainedSubjects()
    tested = [row for row in rows if row[0] in ("caught", "survived")]
    perFile = collections.defaultdict(list)
    for row in tested:
        perFile[row[2]].append(row)
    parts = {part: [row for row in tested if row[2].startswith(part)] for part in LEAST_CAUGHT}
    for path, ofPath in [*sorted(perFile.items()), *parts.items()]:
        if ofPath:
            print(f"{path}\t{sum(map(isCaught, ofPath))} of {len(ofPath)}\t{100 * shareCaught(ofPath):.1f} %"
                  f"\tof those that can be seen\t{100 * shareCaught(visible(ofPath)):.1f} %")
    for kind in ("same code", "no change"):
        print(f"{kind}\t{sum(row[0] == kind for row in rows)}")
    unexplained = [row for row in tested if not isCaught(row) and subject(row) not in explained]
    for row in unexplained:
        print("unexplained\t" + "\t".join(row[2:]))
    outdated = explained & ({subject(row) for row in tested} - {subject(row) for row in tested if not isCaught(row)})
    for name in sorted(outdated):
        print("outdated\t" + "\t".join(name))
    tooFew = isWhole and any(shareCaught(visible(parts[part])) < least for part, least in LEAST_CAUGHT.items())
    return 1 if unexplained or outdated or tooFew else 0


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="")
    parser.add_argument("--sample", type=int, default=720)
    parser.add_argument("--again", type=pathlib.Path)
    parser.add_argument("--report", type=pathlib.Path, default=WORK / "report.tsv")
    parser.add_argument("--list", action="store_true")
    options = parser.parse_args()

    changes = allChanges(options.only)
    subjects = {subject(["", "", *describe(change)]) for change in changes}
    if options.list:
        for change in changes:
            print("\t".join(describe(change)))
        gone = explainedSubjects() - subjects
        for name in sorted(gone):
            print("mutation.py: gone: " + "\t".join(name), file=sys.stderr)
        return 1 if gone else 0
    subprocess.run([ROOT / "scripts" / "setup.sh", "test"], check=True)
    changes = sampled(changes, options.sample)
    earlier = readTable(options.again) if options.again else []
    unexplained = {subject(row) for row in earlier if row[0] == "survived"} - explainedSubjects()
    known = [row for row in earlier if subject(row) in subjects and subject(row) not in unexplained]
    isKnown = {subject(row) for row in known}
    changes = [change for change in changes if subject(["", "", *describe(change)]) not in isKnown]
    options.report.parent.mkdir(parents=True, exist_ok=True)
    with open(options.report, "w") as report:
        report.writelines("\t".join(row) + "\n" for row in known)
        for tester in (oneByOne, switched, pages):
            tester.test(WORK, [change for change in changes if testerOf(change) == tester], options.jobs, report)
    rows = readTable(options.report)
    return summarise(rows, isWhole=not options.only)


if __name__ == "__main__":
    sys.exit(main())
