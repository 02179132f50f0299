#!/usr/bin/env python3
"""No file that somebody sent does harm: by its name, by other files that it names, or by what it asks for.

usage: hostile.py BUILD_FOLDER [--full]

Names: a video under 300 names is analysed under each, gives the same rows, and nothing beside the results changes.
Manifests: files that name another one, or an address, get nothing opened but themselves; strace sees it.
Bombs: files that ask for too much memory or time end with a result, and the others in their folder are as alone.

Without --full some of each. Fails when anything is wrong, and leaves the files concerned in a folder that it names.
"""

import collections
import csv
import dataclasses
import hashlib
import io
import json
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unicodedata
import urllib.parse

sys.dont_write_bytecode = True  # the folder of the sources stays as it is
import hostileBombs
import hostileFiles

SOURCE = ["-f", "lavfi", "-i", "testsrc2=size=72x56:rate=25:duration=0.4"]
TRACED = "open,openat,openat2,open_by_handle_at,creat,connect,socket,execve,execveat"
# Read by the loader, the C library and the codecs' libraries: programs, settings, what the machine is. None of it
# is where somebody's files are.
OF_THE_SYSTEM = ("/usr/", "/lib/", "/lib64/", "/etc/", "/proc/", "/sys/")
STALL = 20  # seconds
LONGEST = 150  # seconds for one bomb: two attempts until each is given up, beside another one
GIVEN_UP = 3600  # seconds, when a run does not end by itself
MEMORY = "2G"
MOST_OF_WORKER = (2048 + 256) << 10  # KiB
MOST_OF_PARENT = 256 << 10
SAMPLING = 0.02  # seconds


@dataclasses.dataclass
class Part:
    name: str
    count: int
    problems: list = dataclasses.field(default_factory=list)  # file or None, and what is wrong
    notes: list = dataclasses.field(default_factory=list)

    def hold(self, isRight, file, what):
        if not isRight:
            self.problems.append((file, what))


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", *arguments], check=True)


def environment(work):
    for name in ("home", "tmp"):
        (work / name).mkdir(exist_ok=True)
    return {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "HOME": str(work / "home"), "TMPDIR": str(work / "tmp")}


def resultsBelow(output):
    """What each result.json says and its folder, by the path that it gives of the video."""
    found = {}
    for path in output.rglob("result.json"):
        if path.is_file():
            result = json.loads(path.read_text(encoding="utf-8"))
            found[os.path.normpath(urllib.parse.unquote_to_bytes(result["input"]["path_uri"]))] = (result, path.parent)
    return found


def rowsOf(folder):
    rows = folder / "rows.tsv"
    return rows.read_bytes() if rows.exists() else b""


def rowsAlone(program, movie, work):
    output = work / "alone"
    subprocess.run([program, movie, "-o", output, "-q"], check=True, env=environment(work))
    (_, folder), = resultsBelow(output).values()
    return rowsOf(folder)


def listing(folder, besides):
    """All files and folders with all that could change of them, but for what is in one folder."""
    found = {}
    for place, folders, files in os.walk(os.fsencode(folder)):
        folders[:] = [name for name in folders if os.path.join(place, name) != os.fsencode(besides)]
        for name in folders + files:
            path = os.path.join(place, name)
            status = os.lstat(path)
            content = b"" if name in folders else hashlib.sha256(pathlib.Path(os.fsdecode(path)).read_bytes()).digest()
            found[path] = (status.st_mode, status.st_mtime_ns if name in files else 0, status.st_size, content)
    return found


def harmOfText(data):
    """What in a text could make a terminal do something, or show it as another text."""
    try:
        text = data.decode()
    except UnicodeDecodeError as error:
        return str(error)
    bad = {c for c in text if unicodedata.category(c) in ("Cc", "Zl", "Zp") or c in hostileFiles.BIDI} - {"\n"}
    return f"prints {sorted(map(ascii, bad))}" if bad else ""


def checkNames(program, movie, rows, work, isFull):
    names = hostileFiles.names() if isFull else hostileFiles.names()[:25]
    part = Part("names", len(names))
    folder, output = work / "names", work / "nameResults"
    for name in names:
        path = os.path.join(os.fsencode(folder), name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        shutil.copyfile(os.fsencode(movie), path)
    # What is hidden, or looks like results, is found by its name alone; what looks like an option comes behind "--".
    hidden = [name for name in names if b"/." in b"/" + name or b".lumascan/" in name]
    listed = work / "hidden.list"
    listed.write_bytes(b"\0".join(hidden) + b"\0")
    asOptions = [name for name in names if name[:1] == b"-" and name != b"-"]
    before = listing(work, output)
    run = subprocess.run([program, "-o", output, "-j", "2", "--files-from", listed, "--", ".", *asOptions], cwd=folder,
                         env=environment(work), capture_output=True, check=False, timeout=GIVEN_UP)
    part.hold(run.returncode == 0, None, f"exit status {run.returncode}: {ascii(run.stderr)}")
    for stream in (run.stdout, run.stderr):
        part.hold(not harmOfText(stream), None, harmOfText(stream))
    after = listing(work, output)
    for path in sorted(before.keys() | after.keys()):
        part.hold(before.get(path) == after.get(path), None, f"{path} was changed, made or removed")
    results = resultsBelow(output)
    for name in names:
        path = os.path.join(os.fsencode(folder), name)
        if name not in results:
            part.hold(False, path, "there is no result that holds its name")
            continue
        result, place = results[name]
        uri = result["input"]["path_uri"]
        part.hold(result["status"] == "complete", path, f"{result['status']}: {result['error']}")
        part.hold(rowsOf(place) == rows, path, "other rows than under a plain name")
        part.hold(uri.removeprefix("./") == urllib.parse.quote(name), path, f"path_uri is {uri}")
    for table in ("run.json", "index.html", "summary.csv"):
        part.hold((output / table).is_file(), None, f"there is no {table}")
    if (output / "summary.csv").is_file():
        text = (output / "summary.csv").read_text(encoding="utf-8", errors="replace")
        rowCount = len(list(csv.reader(io.StringIO(text, newline=""))))
        part.hold(rowCount == 1 + len(results), None, f"summary.csv has {rowCount - 1} rows of {len(results)} results")
    part.hold(results.keys() <= set(names), None, f"results of {sorted(results.keys() - set(names))}")
    return part


def opened(line, cwd):
    """The paths that a line of strace has: as they were asked for, and as the kernel found them."""
    asked = re.search(r'\w+\((?:AT_FDCWD<[^>]*>|\d+<([^>]*)>)?(?:, )?"([^"]*)"', line)
    found = re.search(r"\) += \d+<([^>]*)>", line)
    if asked:
        yield os.path.normpath(os.path.join(asked[1] or cwd, asked[2]))
    if found:
        yield found[1]


def checkTrace(part, log, allowed, folders, cwd):
    """Nothing but these files, and what is in these folders, was opened, no address, no other program."""
    count = 0
    for line in log.read_text(encoding="utf-8", errors="replace").splitlines():
        call = re.match(r"\d+ +(?:<\.\.\. )?(\w+)[( ]", line)
        if call is None:
            continue  # the end of a process, a signal
        count += 1
        if call[1] in ("execve", "execveat"):
            part.hold(count == 1, None, f"a program was started: {line}")
        elif call[1] in ("socket", "connect"):
            part.hold(False, None, f"a socket was used: {line}")
        else:
            for path in opened(line, str(cwd)):
                isAllowed = path in allowed or path.startswith(folders)
                part.hold(isAllowed, path if os.path.isfile(path) else None, f"was opened: {line}")
    part.hold(count > 10, None, "strace has seen nothing")


def checkManifests(program, movie, work, isFull):
    folder, output, patterns, decoys = (work / name for name in ("lists", "listResults", "patterns", "decoys"))
    for place in (folder, output, patterns, decoys):
        place.mkdir()
    decoy = decoys / "decoy.mp4"
    shutil.copyfile(movie, decoy)
    with socket.create_server(("127.0.0.1", 0), backlog=100) as server:
        port = server.getsockname()[1]
        files = dict(hostileFiles.manifests(movie.read_bytes(), str(decoy), "../decoys/decoy.mp4", port))
        if not isFull:  # one of each kind, in different ways
            files = {name: data for i, (name, data) in enumerate(files.items()) if i % 22 % 4 == i // 22}
        for name, data in files.items():
            (folder / name).write_bytes(data)
        # Names by which pictures are counted, beside pictures that are called so.
        for number in range(1, 4):
            for name in (f"a{number}.png", f"a{number:03}.png"):
                ffmpeg(*SOURCE, "-frames:v", "1", patterns / name)
        named = [patterns / name for name in hostileFiles.PATTERNS]
        for path in named:
            path.write_text(str(decoy), encoding="utf-8")
        log = work / "strace.log"
        # Some containers let nobody trace.
        isTraced = subprocess.run(["strace", "-o", log, "true"], capture_output=True, check=False).returncode == 0
        strace = ["strace", "-f", "-y", "-o", log, "-e", f"trace={TRACED}"] if isTraced else []
        command = [*strace, program, "-o", output, "-j", "2", "--include", "*", "--", ".", *named]
        run = subprocess.run(command, cwd=folder, env=environment(work), capture_output=True, check=False,
                             timeout=GIVEN_UP)
        part = Part("manifests", len(files) + len(named))
        server.setblocking(False)
        try:
            server.accept()
            part.hold(False, None, "a connection was made")
        except BlockingIOError:
            pass
    part.hold(run.returncode == 3, None, f"exit status {run.returncode}: {ascii(run.stderr[-1000:])}")
    results = resultsBelow(output)
    scanned = [folder / name for name in files] + named
    for path in scanned:
        name = os.fsencode(path if path in named else path.name)
        if name not in results:
            part.hold(False, path, "has no result")
            continue
        result, place = results[name]
        part.hold(result["status"] == "failed" and result["error"], path, f"{result['status']}: {result['error']}")
        part.hold(rowsOf(place).count(b"\n") <= 1, path, "has rows")
    # Of files: those that are scanned and the folder in which they are looked for, results (of whatever name), values
    # in TMPDIR, and what workers have for standard input.
    allowed = {str(path) for path in [*scanned, folder, output, work / "tmp"]} | {"/dev/null"}
    if isTraced:
        checkTrace(part, log, allowed, (*OF_THE_SYSTEM, f"{output}/", f"{work}/tmp/"), folder)
    else:
        part.notes.append("strace cannot trace here: what was opened is not judged")
    return part


class Watch(threading.Thread):
    """Looks at a process and its workers: how much memory they take, and how long they are at which file."""

    def __init__(self, parent, folder):
        super().__init__(daemon=True)
        self.parent, self.folder, self.isOver = parent, f"{folder}/", False
        self.ofParent, self.workers = 0, {}  # of each its file, when it was seen first and last, and its most memory

    def peak(self, process):
        status = pathlib.Path(f"/proc/{process}/status").read_text(encoding="utf-8")
        return int(re.search(r"VmHWM:\s+(\d+)", status + "VmHWM: 0")[1])

    def file(self, process):
        place = f"/proc/{process}/fd"
        files = {os.readlink(f"{place}/{name}") for name in os.listdir(place)}
        files = [path for path in files if path.startswith(self.folder)]
        # A worker that has just begun has those of others open, too.
        return os.path.basename(files[0]) if len(files) == 1 else ""

    def look(self):
        now = time.monotonic()
        self.ofParent = max(self.ofParent, self.peak(self.parent))
        children = pathlib.Path(f"/proc/{self.parent}/task/{self.parent}/children").read_text(encoding="utf-8").split()
        for process in children:
            name, first, _, most = self.workers.get(process, ("", now, now, 0))
            try:
                self.workers[process] = (self.file(process) or name, first, now, max(most, self.peak(process)))
            except OSError:
                pass  # it has ended meanwhile

    def byFile(self):
        """Seconds in all attempts, and the most memory of one, of each file."""
        seconds, memory = collections.Counter(), collections.Counter()
        for name, first, last, most in self.workers.values():
            seconds[name] += last - first
            memory[name] = max(memory[name], most)
        return seconds, memory

    def run(self):
        while not self.isOver:
            try:
                self.look()
            except OSError:
                pass
            time.sleep(SAMPLING)


def checkBombs(program, movie, rows, work, isFull):
    folder, output = work / "bombs", work / "bombResults"
    folder.mkdir()
    bombs = []
    for name, data in hostileBombs.bombs():
        if len(bombs) == 7 and not isFull:
            break
        (folder / name).write_bytes(data)
        bombs.append(name)
    part = Part("bombs", len(bombs))
    healthy = ["a.mp4", "m.mp4", "z.mp4"]
    for name in healthy:
        shutil.copyfile(movie, folder / name)
    usage = subprocess.run([program, "scan", "--help"], capture_output=True, text=True, check=True).stdout
    isLimited = "--memory-limit" in usage
    limit = ["--memory-limit", MEMORY] if isLimited else []
    if not isLimited:
        part.notes.append("this lumascan has no --memory-limit: what its workers take is not judged")
    command = [program, "-o", output, "-j", "2", "--stall-timeout", str(STALL), "--include", "*", *limit, "."]
    with subprocess.Popen(command, cwd=folder, env=environment(work), stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE) as run:
        watch = Watch(run.pid, folder)
        watch.start()
        try:
            errors = run.communicate(timeout=GIVEN_UP)[1]
        except subprocess.TimeoutExpired:
            run.kill()
            errors = b"it does not end"
        watch.isOver = True
        watch.join()
    part.hold(run.returncode in (0, 3), None, f"exit status {run.returncode}: {ascii(errors[-1000:])}")
    part.hold(0 < watch.ofParent <= MOST_OF_PARENT, None, f"the parent took {watch.ofParent >> 10} MiB")
    part.hold(not harmOfText(errors), None, harmOfText(errors))
    results = resultsBelow(output)
    seconds, memory = watch.byFile()
    for name in bombs + healthy:
        result, place = results.get(name.encode(), ({"status": "none", "error": None}, output))
        path = folder / name
        if name in healthy:
            part.hold(result["status"] == "complete", path, f"healthy, but {result['status']}: {result['error']}")
            part.hold(rowsOf(place) == rows, path, "other rows than alone")
        else:
            part.hold(result["status"] in ("complete", "partial", "failed"), path, "has no result")
        part.hold(seconds[name] <= LONGEST, path, f"took {seconds[name]:.0f} s")
    for name, most in memory.items():
        if most > MOST_OF_WORKER and isLimited:
            part.hold(False, folder / name if name else None, f"took {most >> 10} MiB")
    part.hold(any(memory), None, "no worker was seen with its file")
    part.notes.append("longest: " + ", ".join(f"{name} {value:.1f} s" for name, value in seconds.most_common(3)))
    part.notes.append("most memory: " + ", ".join(f"{name} {value >> 10} MiB" for name, value in memory.most_common(3)))
    return part


def keep(parts):
    """Copies of the files with which something is wrong, each in a folder of its own: names may be any."""
    files = list(dict.fromkeys(os.fsencode(file) for part in parts for file, _ in part.problems if file))
    if files:
        folder = tempfile.mkdtemp(prefix="hostile-")
        for number, file in enumerate(files):
            place = os.path.join(os.fsencode(folder), b"%03d" % number)
            os.mkdir(place)
            shutil.copy(file, place)
        print(f"files concerned: {folder}")


def main():
    program = pathlib.Path(sys.argv[1]).resolve() / "lumascan"
    isFull = "--full" in sys.argv
    with tempfile.TemporaryDirectory() as temporary:
        work = pathlib.Path(temporary).resolve()
        movie = work / "plain.mp4"
        ffmpeg(*SOURCE, "-c:v", "libx264", "-pix_fmt", "yuv420p", movie)
        rows = rowsAlone(program, movie, work)
        parts = []
        for check in (lambda: checkNames(program, movie, rows, work, isFull),
                      lambda: checkManifests(program, movie, work, isFull),
                      lambda: checkBombs(program, movie, rows, work, isFull)):
            start = time.monotonic()
            parts.append(check())
            parts[-1].notes.append(f"{time.monotonic() - start:.0f} s")
        for part in parts:
            for file, what in part.problems:
                print(f"{part.name}: {ascii(os.path.basename(os.fsencode(file))) if file else ''} {what}")
        print("\n| part | files | wrong | |\n|---|--:|--:|---|")
        for part in parts:
            print(f"| {part.name} | {part.count} | {len(part.problems)} | {'; '.join(map(str, part.notes))} |")
        keep(parts)
    return 1 if any(part.problems for part in parts) else 0


if __name__ == "__main__":
    sys.exit(main())
