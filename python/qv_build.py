"""Builds the wheel of qv_sensor with CMake: what pip calls (PEP 517). Needs Python alone.

CMake builds in build/wheel, which is kept: a second build is quick. QV_BUILD_DIR names a build tree
to take the built package from instead.
"""

from __future__ import annotations

import base64
import hashlib
import os
import re
import shutil
import subprocess
import sys
import sysconfig
import tarfile
import tempfile
import tomllib
import zipfile
from pathlib import Path
from typing import Any, Optional

ROOT = Path(__file__).resolve().parent.parent
Settings = Optional[dict[str, Any]]


def _version() -> str:
    found = re.search(r"project\(QVSensor VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())
    assert found
    return found.group(1)


def _metadata() -> str:
    project = tomllib.loads((ROOT / "pyproject.toml").read_text())["project"]
    lines = [
        "Metadata-Version: 2.1",
        f"Name: {project['name']}",
        f"Version: {_version()}",
        f"Summary: {project['description']}",
        f"License: {project['license']['text']}",
        f"Requires-Python: {project['requires-python']}",
    ]
    lines += [f"Requires-Dist: {need}" for need in project["dependencies"]]
    for extra, needs in project["optional-dependencies"].items():
        lines.append(f"Provides-Extra: {extra}")
        lines += [f"Requires-Dist: {need}; extra == '{extra}'" for need in needs]
    return "\n".join(lines) + "\n"


def _tag() -> str:
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    return f"{python}-{python}-{platform}"


def _build() -> Path:
    if given := os.environ.get("QV_BUILD_DIR"):
        return Path(given)
    folder = ROOT / "build" / "wheel"
    options = ["APPS", "EXAMPLES", "TESTS", "ROS2_GRAPH"]
    ninja = ["-G", "Ninja"] if shutil.which("ninja") else []
    subprocess.check_call(
        ["cmake", "-S", ROOT, "-B", folder, *ninja, "-DCMAKE_BUILD_TYPE=Release",
         "-DQV_BUILD_PYTHON=ON", f"-DPython_EXECUTABLE={sys.executable}",
         *(f"-DQV_BUILD_{option}=OFF" for option in options)])  # fmt: skip
    jobs = str(os.cpu_count() or 1)
    subprocess.check_call(["cmake", "--build", folder, "--target", "qv_python", "-j", jobs])
    return folder


def _files(package: Path) -> dict[str, bytes]:
    """The files, by their names in the wheel. A library goes by the name that others link: a link here."""
    linked = {path.resolve() for path in package.rglob("*") if path.is_symlink()}
    return {
        str(path.relative_to(package)): path.read_bytes()
        for path in sorted(package.rglob("*"))
        if path.is_file() and path not in linked
    }


def _write_wheel(path: Path, info: str, files: dict[str, bytes]) -> None:
    rows = []
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as wheel:
        for name, content in files.items():
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=")
            rows.append(f"{name},sha256={digest.decode()},{len(content)}\n")
            wheel.writestr(name, content)
        wheel.writestr(f"{info}/RECORD", "".join(rows) + f"{info}/RECORD,,\n")


def prepare_metadata_for_build_wheel(
    metadata_directory: str, config_settings: Settings = None
) -> str:
    """Writes what pip wants to know first, for which it would else build a whole wheel."""
    name = f"qv_sensor-{_version()}.dist-info"
    folder = Path(metadata_directory) / name
    folder.mkdir()
    (folder / "METADATA").write_text(_metadata())
    return name


def build_wheel(
    wheel_directory: str, config_settings: Settings = None, metadata_directory: Optional[str] = None
) -> str:
    """Builds the wheel into a folder, and says its name."""
    info = f"qv_sensor-{_version()}.dist-info"
    name = f"qv_sensor-{_version()}-{_tag()}.whl"
    with tempfile.TemporaryDirectory() as folder:
        subprocess.check_call(
            ["cmake", "--install", _build(), "--component", "python", "--strip", "--prefix", folder],
            stdout=subprocess.DEVNULL)  # fmt: skip
        files = _files(Path(folder).resolve())
    files[f"{info}/METADATA"] = _metadata().encode()
    files[f"{info}/LICENSE"] = (ROOT / "LICENSE").read_bytes()
    wheel = f"Wheel-Version: 1.0\nGenerator: qv_build\nRoot-Is-Purelib: false\nTag: {_tag()}\n"
    files[f"{info}/WHEEL"] = wheel.encode()
    _write_wheel(Path(wheel_directory) / name, info, files)
    return name


def build_sdist(sdist_directory: str, config_settings: Settings = None) -> str:
    """Writes an archive of the files that git knows."""
    base = f"qv_sensor-{_version()}"
    listed = subprocess.check_output(["git", "ls-files", "-z"], cwd=ROOT).decode()
    with tarfile.open(Path(sdist_directory) / f"{base}.tar.gz", "w:gz") as archive:
        for name in filter(None, listed.split("\0")):
            archive.add(ROOT / name, f"{base}/{name}")
    return f"{base}.tar.gz"
