"""Changes of src/: each in a build of its own, since what the compiler makes of the kernels is tested, too."""

import concurrent.futures
import os
import pathlib
import queue
import re
import resource
import shutil
import subprocess
import sys

from .changes import ROOT, describe, textOf
from .running import run

TIMEOUT = 100  # seconds; a test program that takes longer is caught in an endless loop
MEMORY = 6 << 10  # MiB; some tests map 2 GiB
OPTIONS = ["-DLUMAPROBE_PORTABLE=ON", "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"]
PRESETS = {"release": ["-DCMAKE_CXX_FLAGS=-w"], "asan": []}
GTEST = ["--gtest_fail_fast", "--gtest_brief=1"]
# With which preset what is built, then run, in this order, for changes in which files: what catches most
# in the shortest time comes first.
TESTS = [
    ("release", ["unitTests"], ["{build}/unitTests", *GTEST], ""),
    ("release", ["cliTests", "lumaprobe"], ["{build}/cliTests", *GTEST], ""),
    ("release", ["makeClip"], ["{tree}/tests/golden/goldenRows.sh", "{tree}", "{build}"], ""),
    ("release", ["faultTests"], ["{build}/faultTests", *GTEST], "src/driver|assertion"),
    ("release", ["fuzzCommandLine"], ["{build}/fuzzCommandLine", "{tree}/tests/fuzz/corpus/fuzzCommandLine"],
     "commandLine"),
    ("release", ["fuzzRun"], ["{build}/fuzzRun", "{tree}/tests/fuzz/corpus/fuzzRun"], "src/driver"),
    ("release", ["twinTests"], ["{build}/twinTests", "--gtest_filter={twins}", *GTEST],
     "src/[^d]|src/definitions"),
    ("asan", ["unitTests"], ["{build}/unitTests", *GTEST], ""),
    ("asan", ["twinTests"], ["{build}/twinTests", "--gtest_filter={twins}", *GTEST],
     "src/[^d]|src/definitions"),
]


def twinsOf(path):
    """Filter of the twin tests that can notice a change in a file: an indicator uses no other."""
    if not path or "/indicators/" not in path or path.endswith(".h"):
        return "*"
    name = re.sub("RMS$", "", pathlib.Path(path).stem)
    return f"Twins.{name}*:Twins.opinionScores"


class Tree:
    """A copy of the project, built and passing, in which changes are made one after another."""

    def __init__(self, work, number):
        self.tree = work / f"tree{number}"
        self.temporary = work / f"temporary{number}"
        shutil.rmtree(self.temporary, ignore_errors=True)
        self.temporary.mkdir(parents=True)
        for path in self.tree.glob("*"):
            if path.is_dir() and path.name != "build":
                shutil.rmtree(path)
        shutil.copytree(ROOT, self.tree, ignore=shutil.ignore_patterns("build", ".git"), dirs_exist_ok=True)
        for path in (self.tree / "src").rglob("*.*"):
            path.touch()  # what an earlier run has built of it may hold a change
        for preset, options in PRESETS.items():
            subprocess.run(["cmake", "--preset", preset, *OPTIONS, *options], cwd=self.tree, check=True,
                           stdout=subprocess.DEVNULL)
        for preset, targets, _, _ in TESTS:
            subprocess.run(["cmake", "--build", self.build(preset), "--target", *targets, "-j1"], check=True,
                           stdout=subprocess.DEVNULL)
        self.code = self.machineCode()
        assert self.code
        if self.firstFailure() is not None:
            sys.exit("mutation.py: the tests fail before any change: " + self.firstFailure())

    def build(self, preset):
        return self.tree / "build" / preset

    def machineCode(self):
        objects = sorted((self.build("release") / "CMakeFiles").glob("*/src/**/*.o"))
        return {path: path.read_bytes() for path in objects}

    def make(self, targets, preset="release"):
        return run(["ninja", "-C", self.build(preset), "-j1", *targets], 300) == 0

    def firstFailure(self, path=None):
        """Name of the first test program that fails after a change in a file, 'build' if one cannot be
        made, or None."""
        environment = dict(os.environ, TMPDIR=str(self.temporary), ASAN_OPTIONS=f"hard_rss_limit_mb={MEMORY}")
        for preset, targets, command, paths in TESTS:
            if path and not re.search(paths, path):
                continue
            if not self.make(targets, preset):
                return "build"
            command = [part.format(tree=self.tree, build=self.build(preset), twins=twinsOf(path))
                       for part in command]
            # The sanitizer reserves more addresses than there is memory.
            limit = MEMORY if preset == "release" else resource.RLIM_INFINITY
            if run(command, TIMEOUT, self.temporary, environment, limit) != 0:
                return f"{pathlib.Path(command[0]).name} {preset}"
        return None

    def verdict(self, change):
        """'caught', 'survived', 'same code' or 'no change' (does not compile), and what caught it."""
        path = self.tree / change.path
        code = textOf(change.path)
        path.write_text(code[:change.start] + change.new + code[change.end:])
        try:
            program = ["driver", "lumaprobe"]
            if not self.make([*program, "unitTests"]):
                return ("caught", "build") if self.make(program) else ("no change", "")
            if self.machineCode() == self.code:
                return "same code", ""
            failure = self.firstFailure(change.path)
            return ("survived", "") if failure is None else ("caught", failure)
        finally:
            path.write_text(code)
            shutil.rmtree(self.temporary)
            self.temporary.mkdir()


def test(work, changes, jobs, report):
    """Makes every change; adds a row of verdict, catcher and description to the report for each."""
    if not changes:
        return
    todo = queue.Queue()
    for change in changes:
        todo.put(change)

    def testAll(tree):
        while True:
            try:
                change = todo.get_nowait()
            except queue.Empty:
                return
            row = [*tree.verdict(change), *describe(change)]
            report.write("\t".join(row) + "\n")
            report.flush()

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        trees = list(pool.map(lambda number: Tree(work, number), range(jobs)))
        list(pool.map(testAll, trees))
