#!/usr/bin/env python3
"""Makes one small wrong change at a time in src/ and tells which ones the fast tests do not notice.

usage: scripts/mutation.py [--jobs N] [--only TEXT] [--again FILE] [--report FILE] [--list]

A change is a comparison moved by one or turned round, a constant one off, an operator swapped, a
negation or a statement dropped. Each is made alone in a copy of the project, built and tested until
the first test fails, at last with the address and undefined behaviour sanitizers. A change that does
not compile, or compiles to the same machine code, is none.

  --only TEXT    changes in files whose path contains TEXT
  --again FILE   take over what an earlier report, even an unfinished one, says of all changes but those that
                 survived without a reason
  --report FILE  where the table of all changes goes, as they are tested (build/mutation/report.tsv)
  --list         print the changes, make none; fails when a change that tests/mutation/equivalent.tsv names
                 is none of them

tests/mutation/equivalent.tsv names the changes that no test can see, with the reason. The exit status is
1 when a change that is not named there survives, and, of a run over all files, when fewer than 95 % of
the changes are caught or one that is named there does not survive.
"""

import argparse
import collections
import concurrent.futures
import csv
import os
import pathlib
import queue
import re
import resource
import shutil
import signal
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
EQUIVALENT = ROOT / "tests" / "mutation" / "equivalent.tsv"
LEAST_CAUGHT = 0.95
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

TOKEN = re.compile(
    r"""(?P<skip>//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|'(?:\\.|[^'\\])*'|^[ ]*\#(?:\\\n|[^\n])*)
      |(?P<number>(?<![\w.])(?:0[xX][0-9a-fA-F]+|\d+\.\d*(?:[eE][-+]?\d+)?|\d+)(?P<suffix>[uUlLfF]*)(?!\w))
      |(?P<operator>\+\+|--|<<=|>>=|<<|>>|<=|>=|==|!=|&&|\|\||->|[-+*/%&|^]=|[-+*/%&|^<>!?=])""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

# Binary operators stand between blanks in this code, and nothing else that looks like them does.
BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="], "^=": ["|="],
}
UNARY = {"++": ["--"], "--": ["++"], "!": [""]}
# Declarations, and returns that nothing guards: without them nothing compiles, or nothing is defined.
KEPT = re.compile(r"(using|case|default|return|const|constexpr|static|auto|bool|double|u?int\d+_t|size_t|"
                  r"pthread_\w+|FILE|Image\w*|[A-Z]\w+)\b")
GUARD = re.compile(r"(?:else\s+)?(?:if|for|while) \(|else\b|do\b")

Change = collections.namedtuple("Change", "path line column start end new")


def numbersBeside(text, suffix):
    digits = text[:len(text) - len(suffix)] if suffix else text
    if "." in digits or "e" in digits.lower() and not digits.lower().startswith("0x"):
        value = float(digits)
        return [repr(value * 1.01 if value else 0.01) + suffix]
    value = int(digits, 0)
    form = hex if digits.lower().startswith("0x") else str
    return [form(other) + suffix for other in (value + 1, value - 1) if other >= 0]


def changesOfTokens(code):
    for token in TOKEN.finditer(code):
        start, end = token.span()
        if token["number"]:
            for new in numbersBeside(token["number"], token["suffix"]):
                yield start, end, new
        elif token["operator"]:
            text = token["operator"]
            isBinary = code[start - 1].isspace() and code[end:end + 1].isspace()
            line = code[code.rfind("\n", 0, start) + 1:start]
            if isBinary and not line.lstrip().startswith("template"):
                for new in BINARY.get(text, []):
                    yield start, end, new
            elif not isBinary:
                for new in UNARY.get(text, []):
                    yield start, end, new


def withoutSkipped(code):
    """The code with comments, texts and directives blanked, every position kept."""
    return TOKEN.sub(lambda token: re.sub(r"[^\n]", " ", token[0]) if token["skip"] else token[0], code)


def droppedStatements(code):
    """Statements of functions that end in ';', each without what guards it."""
    depth = 0
    start = 0
    for position, character in enumerate(code):
        depth += (character == "(") - (character == ")")
        if depth or character not in "{};":
            continue
        begin = start + len(code[start:position]) - len(code[start:position].lstrip())
        start = position + 1
        if character != ";" or begin == position or code[begin - 1] == "\n":  # functions are indented
            continue
        inner = begin
        while guard := GUARD.match(code, inner):
            inner = endOfParentheses(code, guard.end() - 1) if guard[0].endswith("(") else guard.end()
            inner += len(code[inner:position]) - len(code[inner:position].lstrip())
        if inner > begin or not KEPT.match(code, inner):
            yield inner, position + 1, ";"


def endOfParentheses(code, opening):
    depth = 0
    for position in range(opening, len(code)):
        depth += (code[position] == "(") - (code[position] == ")")
        if depth == 0:
            return position + 1
    raise ValueError("parentheses are not closed")


def allChanges(only):
    changes = []
    for path in sorted((ROOT / "src").rglob("*.[ch]*")):
        relative = str(path.relative_to(ROOT))
        if only not in relative:
            continue
        code = path.read_text()
        found = [*changesOfTokens(code), *droppedStatements(withoutSkipped(code))]
        for start, end, new in sorted(found):
            line = code.count("\n", 0, start) + 1
            column = start - code.rfind("\n", 0, start)
            changes.append(Change(relative, line, column, start, end, new))
    return changes


def describe(change):
    """File, line, column, the line's text, and what the change replaces by what."""
    code = (ROOT / change.path).read_text()
    line = code.splitlines()[change.line - 1].strip()
    old = " ".join(code[change.start:change.end].split())
    return [change.path, str(change.line), str(change.column), line, f"{old} -> {change.new}".strip()]


def twinsOf(path):
    """Filter of the twin tests that can notice a change in a file: an indicator uses no other."""
    if not path or "/indicators/" not in path or path.endswith(".h"):
        return "*"
    name = re.sub("RMS$", "", pathlib.Path(path).stem)
    return f"Twins.{name}*:Twins.opinionScores"


def run(command, timeout, cwd=None, environment=None, mebibytes=resource.RLIM_INFINITY):
    """Exit status of a command, None after `timeout` seconds. Nothing of it is left running."""
    bytes = mebibytes if mebibytes == resource.RLIM_INFINITY else mebibytes << 20
    process = subprocess.Popen(
        command, cwd=cwd, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL, start_new_session=True,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (bytes, bytes)))
    try:
        return process.wait(timeout)
    except subprocess.TimeoutExpired:
        return None
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Tree:
    """A copy of the project, built and passing, in which changes are made one after another."""

    def __init__(self, number):
        self.tree = WORK / f"tree{number}"
        self.temporary = WORK / f"temporary{number}"
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
        code = (ROOT / change.path).read_text()
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


def test(changes, jobs, report):
    """Makes every change; adds a row of verdict, catcher and description to the report for each."""
    todo = queue.Queue()
    for change in changes:
        todo.put(change)

    def work(tree):
        while True:
            try:
                change = todo.get_nowait()
            except queue.Empty:
                return
            row = [*tree.verdict(change), *describe(change)]
            report.write("\t".join(row) + "\n")
            report.flush()

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        trees = list(pool.map(Tree, range(jobs)))
        list(pool.map(work, trees))


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


def summarise(rows, isWhole):
    """Prints a line per file and the total; returns the exit status."""
    explained = explainedSubjects()
    tested = [row for row in rows if row[0] in ("caught", "survived")]
    perFile = collections.defaultdict(list)
    for row in tested:
        perFile[row[2]].append(row)
    for path, ofFile in [*sorted(perFile.items()), ("all", tested)]:
        caught = sum(map(isCaught, ofFile))
        print(f"{path}\t{caught} of {len(ofFile)}\t{100 * caught / len(ofFile):.1f} %")
    for kind in ("same code", "no change"):
        print(f"{kind}\t{sum(row[0] == kind for row in rows)}")
    unexplained = [row for row in tested if not isCaught(row) and subject(row) not in explained]
    for row in unexplained:
        print("unexplained\t" + "\t".join(row[2:]))
    if not isWhole:
        return 1 if unexplained else 0
    outdated = explained - {subject(row) for row in tested if not isCaught(row)}
    for name in sorted(outdated):
        print("outdated\t" + "\t".join(name))
    tooFew = sum(map(isCaught, tested)) < LEAST_CAUGHT * len(tested)
    return 1 if unexplained or outdated or tooFew else 0


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="")
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
    earlier = readTable(options.again) if options.again else []
    unexplained = {subject(row) for row in earlier if row[0] == "survived"} - explainedSubjects()
    known = [row for row in earlier if subject(row) in subjects and subject(row) not in unexplained]
    isKnown = {subject(row) for row in known}
    changes = [change for change in changes if subject(["", "", *describe(change)]) not in isKnown]
    options.report.parent.mkdir(parents=True, exist_ok=True)
    with open(options.report, "w") as report:
        report.writelines("\t".join(row) + "\n" for row in known)
        test(changes, options.jobs, report)
    rows = readTable(options.report)
    return summarise(rows, isWhole=not options.only)


if __name__ == "__main__":
    sys.exit(main())
