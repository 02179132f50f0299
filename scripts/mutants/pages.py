"""Changes of the pages' scripts: made in pages that are written once, and looked at in a browser."""

import base64
import concurrent.futures
import hashlib
import shutil
import subprocess
import sys

from .changes import ROOT, describe, textOf
from .running import run

TIMEOUT = 300  # seconds


def writePages(work):
    build = work / "pagesBuild"
    pages = work / "pages"
    shutil.rmtree(pages, ignore_errors=True)
    (pages / "thumbs").mkdir(parents=True)
    quiet = {"check": True, "stdout": subprocess.DEVNULL}
    subprocess.run(["cmake", "--preset", "release", "-B", build], cwd=ROOT, **quiet)
    subprocess.run(["cmake", "--build", build, "--target", "scanSamplePages"], **quiet)
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=160x90:rate=1", "-frames:v", "24",
                    "-q:v", "6", pages / "thumbs" / "%d.jpg"], **quiet)
    subprocess.run([build / "scanSamplePages", pages], **quiet)
    return pages


def passes(folder):
    return run(["node", ROOT / "tests" / "scan" / "page.mjs", ROOT, folder], TIMEOUT) == 0


def hashOf(script):
    """As a page's policy names the scripts that may run."""
    return base64.b64encode(hashlib.sha256(script.encode()).digest()).decode()


def verdict(pages, folder, change):
    """'caught', 'survived' or 'no change' (no script any more), and what caught it."""
    code = textOf(change.path)
    changed = code[:change.start] + change.new + code[change.end:]
    if subprocess.run(["node", "--check", "-"], input=changed, text=True, capture_output=True).returncode != 0:
        return "no change", ""
    shutil.rmtree(folder, ignore_errors=True)  # of a run that was stopped
    shutil.copytree(pages, folder)
    try:
        for page in folder.glob("*.html"):
            text = page.read_text()
            page.write_text(text.replace(code, changed).replace(hashOf(code), hashOf(changed)))
        return ("survived", "") if passes(folder) else ("caught", "page")
    finally:
        shutil.rmtree(folder)


def test(work, changes, jobs, report):
    """Makes every change; adds a row of verdict, catcher and description to the report for each."""
    if not changes:
        return
    pages = writePages(work)
    texts = [page.read_text() for page in pages.glob("*.html")]
    for path in {change.path for change in changes}:
        if not any(textOf(path) in text and hashOf(textOf(path)) in text for text in texts):
            sys.exit(f"mutation.py: no page holds {path} as it is")
    if not passes(pages):
        sys.exit("mutation.py: page.mjs fails before any change")

    def make(numbered):
        number, change = numbered
        report.write("\t".join([*verdict(pages, work / f"pages{number}", change), *describe(change)]) + "\n")
        report.flush()

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        list(pool.map(make, enumerate(changes)))
