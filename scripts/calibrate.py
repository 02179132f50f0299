#!/usr/bin/python3
"""Holds the events of a lumascan against clips that are clean and clips that are damaged as the field damages them.

usage: calibrate.py make    WORK [--sample N]              makes what is missing of the corpus
       calibrate.py measure WORK LUMASCAN                  analyses it
       calibrate.py judge   WORK LUMASCAN [--verify] [--peers]   what was found, and what is false, as tables

calibration/damages.py says what is made, calibration/matching.py what counts as found; scripts/setup.sh's group `long`
installs what is needed.
Python is Debian's own, which has Debian's numpy.
"""
import argparse
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from calibration import judging, making, measuring  # noqa: E402


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('step', choices=('make', 'measure', 'judge'))
    parser.add_argument('work', type=pathlib.Path)
    parser.add_argument('lumascan', type=pathlib.Path, nargs='?')
    parser.add_argument('--sample', type=int, default=1, metavar='N', help='every Nth damaged clip only')
    parser.add_argument('--jobs', type=int, default=2, help='clips that are made side by side')
    parser.add_argument('--results', metavar='NAME', help='folder in WORK/results, not the program\'s own')
    parser.add_argument('--verify', action='store_true', help='judge the half that nothing was chosen by')
    parser.add_argument('--peers', action='store_true', help="FFmpeg's detectors on the same files")
    options = parser.parse_args()
    work = options.work.resolve()
    if options.step == 'make':
        making.make(work, options.sample, options.jobs)
        return
    if not options.lumascan:
        parser.error(f'{options.step} needs LUMASCAN')
    lumascan = options.lumascan.resolve()
    results = work / 'results' / options.results if options.results else measuring.resultsOf(work, lumascan)
    if options.step == 'measure':
        measuring.measure(work, lumascan, results)
    else:
        judging.judge(work, results, 'verify' if options.verify else 'choose', options.peers)


if __name__ == '__main__':
    main()
