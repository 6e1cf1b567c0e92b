"""The package as a whole: examples, stub and pages."""

import re
import subprocess
import sys

import pytest
import qv_sensor as qv
from conftest import ROOT


def run(*arguments):
    done = subprocess.run(
        [sys.executable, *map(str, arguments)], capture_output=True, text=True, timeout=300, cwd=ROOT)  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


@pytest.mark.parametrize(
    ("example", "expected"),
    [
        ("first_reading", r"FrontLaser: \d\.\d\d m\n[^$]*FrontLaser: \d+ points"),
        ("own_sensor", r"Left on\nRight on\nLeft: 1 points\nRight: 0 points\nLeft off\nRight off\n$"),
        ("avoid_obstacles", r"\n0 collisions in a minute and a half\n$"),
    ],
)
def test_examples_say_what_they_should(example, expected):
    path = ROOT / "examples" / "python" / f"{example}.py"
    assert len(path.read_text().splitlines()) < 60
    assert re.search(expected, run(path))


def test_the_particle_filter_finds_the_robot(data, tmp_path):
    example = ROOT / "examples" / "python" / "particle_filter.py"
    assert len(example.read_text().splitlines()) < 60
    picture = tmp_path / "filter.png"
    out = run(example, data / "maps" / "pal_small_office" / "map.yaml", 2, picture)
    worst = float(re.search(r"(\S+) m at most", out).group(1))
    assert worst < 0.15
    assert picture.read_bytes()[:4] == b"\x89PNG"


def test_stub_and_page_are_written_from_the_docstrings():
    run(ROOT / "python" / "tools" / "describe.py", "--check")


def members_of(value):
    if not isinstance(value, type) or issubclass(value, (Exception, tuple)):
        return []
    return [(name, member) for name, member in vars(value).items() if name[0] != "_"]


def test_everything_public_is_described_and_has_its_place_in_the_guide():
    guide = (ROOT / "docs" / "python.md").read_text()
    for name in qv.__all__:
        if name.startswith("__"):
            continue
        assert re.search(rf"\b{name}\b", guide), name
        value = getattr(qv, name)
        assert value.__doc__, name
        for member, told in members_of(value):
            assert told.__doc__, f"{name}.{member}"
            # Else neither stub nor page would have it.
            if value.__module__ == "qv_sensor._core":
                assert re.match(rf"{member}\(.*\) -> |[^\n]*: ", told.__doc__), f"{name}.{member}"


def test_types_hold_for_mypy():
    pytest.importorskip("mypy", reason="skipped: no mypy")
    run("-m", "mypy", "--cache-dir", "/dev/null", "--no-error-summary")
