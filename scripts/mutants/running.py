"""Runs a program that may hang, or eat all memory, since something in it was changed."""

import os
import resource
import signal
import subprocess


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
