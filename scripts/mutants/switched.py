"""Changes of scan/: all in one build, each switched on by a variable of the environment.

A function with changes holds itself once more for each of them. Before any is made, every test runs alone and notes
which changes it comes by; these tests are the only ones that can notice them. What is outside of functions is changed
and built one at a time.
"""

import collections
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import time

from .changes import ROOT, describe, textOf
from .functions import bodies, bodyOf, withChanges
from .running import run

PROGRAMS = ["scanTests", "lumascanTests"]
TARGETS = [*PROGRAMS, "lumaprobe", "lumascan", "makeClip", "fuzzMedia", "fuzzStored", "scanSamplePages"]
# Those that are no GoogleTest programs.
COMMANDS = {
    "keptScans": ["{tree}/tests/lumascan/keptScans.sh", "{tree}", "{build}"],
    "fuzzMedia": ["{build}/fuzzMedia", "{tree}/tests/fuzz/corpus/fuzzMedia"],
    "fuzzStored": ["{build}/fuzzStored", "{tree}/tests/fuzz/corpus/fuzzStored"],
    "robustness": ["{tree}/tests/lumascan/robustness.sh", "{tree}", "{build}"],
    "page": ["{tree}/tests/scan/page.sh", "{tree}", "{build}"],
}
ERROR = re.compile(r"/switched/(scan/[\w/]+\.(?:cpp|h)):(\d+):\d+: (?:fatal )?error")
BROADEST = ("keptScans", "")  # is run in any case, after the quick ones: it sees a part of everything
QUICK = 1.0  # seconds; tests that take no longer come first
BUDGET = float(os.environ.get("MUTATION_BUDGET", 100))  # seconds of tests for one change
PATIENCE = 10  # times what tests take without a change, and as many seconds: slowness is no finding


class Tests:
    """What can be run against a build, how long each takes, and which changes it comes by."""

    def __init__(self, tree, build, folder):
        self.tree = tree
        self.build = build
        self.folder = folder
        self.seconds = {}
        self.changes = {}
        self.names = [(program, name) for program in PROGRAMS for name in self.listed(program)]
        self.names += [(command, "") for command in COMMANDS]

    def listed(self, program):
        suite = ""
        output = subprocess.run([self.build / program, "--gtest_list_tests"], check=True, capture_output=True,
                                text=True).stdout
        for line in output.splitlines()[1:]:
            if line.startswith(" "):
                yield suite + line.split("#")[0].strip()
            else:
                suite = line.split("#")[0].strip()

    def command(self, program, names):
        if program in COMMANDS:
            return [part.format(tree=self.tree, build=self.build) for part in COMMANDS[program]]
        return [self.build / program, "--gtest_filter=" + ":".join(names), "--gtest_fail_fast", "--gtest_brief=1"]

    def passes(self, program, names, timeout, variables):
        temporary = self.folder / f"temporary{variables.get('MUTANT', '')}{variables.get('MUTANT_RECORD', '')[-6:]}"
        temporary.mkdir()
        environment = dict(os.environ, TMPDIR=str(temporary), **variables)
        try:
            return run(self.command(program, names), timeout, temporary, environment) == 0
        finally:
            subprocess.run(["chmod", "-R", "u+rwX", temporary], check=False)
            shutil.rmtree(temporary)

    def learn(self, number):
        """Runs one test without a change."""
        program, name = test = self.names[number]
        record = self.folder / f"record{number:06}"
        record.touch()
        record.chmod(0o666)  # for tests that give their rights away
        begin = time.monotonic()
        if not self.passes(program, [name], 600, {"MUTANT_RECORD": str(record)}):
            sys.exit(f"mutation.py: fails before any change: {program} {name}")
        self.seconds[test] = time.monotonic() - begin
        self.changes[test] = set(map(int, record.read_text().split()))

    def chosen(self, numbers):
        """Of the tests that come by one of the changes, those that come by the fewest, as many as there is time for."""
        left = BUDGET
        order = sorted(self.names, key=lambda test: (test != BROADEST, len(self.changes[test]), self.seconds[test]))
        for test in order:
            if self.changes[test] & numbers and self.seconds[test] <= left:
                left -= self.seconds[test]
                yield test

    def firstFailure(self, tests, variables):
        """Name of the first program that fails, or None."""
        groups = collections.defaultdict(list)
        for program, name in tests:
            isSlow = self.seconds[program, name] > QUICK and (program, name) != BROADEST
            groups[isSlow, (PROGRAMS + list(COMMANDS)).index(program), program].append(name)
        for key in sorted(groups):
            program, names = key[2], groups[key]
            usual = sum(self.seconds[program, name] for name in names)
            if not self.passes(program, names, PATIENCE + PATIENCE * usual, variables):
                return program
        return None


def isWithinFunction(change):
    return bodyOf(change, bodies(textOf(change.path))) is not None


class Build:
    """A copy of the project in which the changes within functions are built in."""

    def __init__(self, work, changes, jobs):
        self.tree = work / "switched"
        self.build = self.tree / "build" / "release"
        self.folder = work / "running"
        self.jobs = jobs
        for path in self.tree.glob("*"):
            if path.is_dir() and path.name != "build":
                shutil.rmtree(path)
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        shutil.copytree(ROOT, self.tree, ignore=shutil.ignore_patterns("build", ".git"), dirs_exist_ok=True)
        # A change outside of functions need not have nine other sources compiled.
        settings = self.tree / "scan" / "CMakeLists.txt"
        settings.write_text(settings.read_text().replace("UNITY_BUILD ON", "UNITY_BUILD OFF"))
        self.changes = dict(enumerate(changes, 1))
        self.isSwitched = {number: isWithinFunction(change) for number, change in self.changes.items()}
        self.broken = set()
        self.configure()
        self.writeAll()
        self.tests = Tests(self.tree, self.build, self.folder)
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            list(pool.map(self.tests.learn, range(len(self.tests.names))))

    def configure(self):
        flags = f"-w -include {self.tree}/scripts/mutants/switched.h"
        subprocess.run(["cmake", "--preset", "release", f"-DCMAKE_CXX_FLAGS={flags}",
                        "-DCMAKE_CXX_FLAGS_RELEASE=-O1", "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"],
                       cwd=self.tree, check=True, stdout=subprocess.DEVNULL)

    def make(self, targets=TARGETS):
        return subprocess.run(["ninja", "-C", self.build, "-j", str(self.jobs), "-k", "0", *targets],
                              capture_output=True, text=True)

    def writeAll(self):
        """Builds with all changes within functions, without those that do not compile."""
        while True:
            lines = collections.defaultdict(dict)
            for path in sorted({change.path for change in self.changes.values()}):
                ofFile = {number: change for number, change in self.changes.items() if change.path == path
                          and self.isSwitched[number] and number not in self.broken}
                text, lines[path] = withChanges(textOf(path), ofFile)
                if (self.tree / path).read_text() != text:
                    (self.tree / path).write_text(text)
            made = self.make()
            if made.returncode == 0:
                return
            before = len(self.broken)
            for path, line in ERROR.findall(made.stdout):
                self.broken |= {number for number, range in lines[path].items() if int(line) in range}
            if len(self.broken) == before:
                sys.exit("mutation.py: does not compile without a change:\n" + made.stdout[-3000:])

    def switched(self, number):
        if number in self.broken:
            return "no change", ""
        failure = self.tests.firstFailure(self.tests.chosen({number}), {"MUTANT": str(number)})
        return ("survived", "") if failure is None else ("caught", failure)

    def rebuilt(self, number):
        change = self.changes[number]
        path = self.tree / change.path
        kept = path.read_text()
        code = textOf(change.path)
        path.write_text(code[:change.start] + change.new + code[change.end:])
        try:
            if self.make(["lumascan"]).returncode != 0:
                return "no change", ""
            if self.make().returncode != 0:
                return "caught", "build"
            failure = self.tests.firstFailure(self.testsOf(change), {})
            return ("survived", "") if failure is None else ("caught", failure)
        finally:
            path.write_text(kept)

    def testsOf(self, change):
        """Of a change outside of functions: those that come by a change in its file, or by any."""
        ofFile = {number for number, other in self.changes.items()
                  if other.path == change.path and self.isSwitched[number]}
        return self.tests.chosen(ofFile or set(self.changes))


def test(work, changes, jobs, report):
    """Makes every change; adds a row of verdict, catcher and description to the report for each."""
    if not changes:
        return
    build = Build(work, changes, jobs)

    def write(number, verdict):
        report.write("\t".join([*verdict, *describe(build.changes[number])]) + "\n")
        report.flush()

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        numbers = [number for number, isSwitched in build.isSwitched.items() if isSwitched]
        list(pool.map(lambda number: write(number, build.switched(number)), numbers))
    for number, isSwitched in build.isSwitched.items():
        if not isSwitched:
            write(number, build.rebuilt(number))
