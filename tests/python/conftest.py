"""Fixtures and helpers of the tests."""

import os
import pathlib
import signal
import subprocess
import sys
import textwrap
import threading
import time

import pytest
import qv_sensor as qv

ROOT = pathlib.Path(__file__).resolve().parents[2]
IN_THE_FLAT = (3.0, 6.3, 0.0)

# A shell makes what it starts in the background ignore Ctrl-C.
signal.signal(signal.SIGINT, signal.default_int_handler)


def press_ctrl_c_soon(times=1):
    """Returns when the waiting began."""
    for i in range(times):
        threading.Timer(0.3 * (1 + i), signal.raise_signal, [signal.SIGINT]).start()
    return time.monotonic()


@pytest.fixture
def session():
    """The virtual robot, at one place in the project's own map."""
    with qv.open_virtual(start=IN_THE_FLAT) as opened:
        yield opened


@pytest.fixture(scope="session")
def flat():
    return qv.load_map("apartment")


@pytest.fixture(scope="session")
def data():
    folder = os.environ.get("QV_DATA", "")
    if not folder or not pathlib.Path(folder).is_dir():
        pytest.skip("QV_DATA names no folder of real data")
    return pathlib.Path(folder)


@pytest.fixture
def run_python():
    """Runs a program of its own: a crash shows in how it ends."""

    def run(program: str) -> str:
        done = subprocess.run(
            [sys.executable, "-c", textwrap.dedent(program)],
            capture_output=True, text=True, timeout=60, cwd=ROOT)  # fmt: skip
        assert done.returncode == 0, f"ended with {done.returncode}: {done.stderr}"
        return done.stdout

    return run
