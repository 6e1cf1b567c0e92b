"""Runs the commands of the pages for users, each page's in a folder of its own.

Usage: check_commands.py FOLDER_OF_PROGRAMS WORK_FOLDER
"""

import concurrent.futures
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys

from blocks import ROOT, all_blocks, commands_of

# Commands that are not run, with the reason.
NOT_RUN = {
    r"\./dev (?!help)": "takes minutes, or installs packages; that there is such a command is looked at",
    r"(apt-get|podman) ": "changes the machine, or needs an engine; that its files are there is looked at",
    r"cmake ": "the test of the package builds these projects; that the preset is there is looked at",
    r"node tests/live/|\(cd tests/live": "needs npm; that the file is there is looked at",
}
SECONDS = 60
# It stands at the start of the paths, in an empty hall.
A_ROBOT_ON_THE_GRAPH = "qvsensors serve --robot porter --ros2 --map hall.yaml --pose 0,0,0"
HALL = "image: hall.pgm\nresolution: 1\norigin: [-5, -5, 0]\nnegate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.2\n"


def looked_at(command):
    """Returns the error of a command that isn't run, as far as its text shows it."""
    developer = re.match(r"\./dev ([\w-]+)", command)
    if developer and f"\ndo_{developer[1].replace('-', '_')}() {{" not in (ROOT / "dev").read_text():
        return "./dev has no such command"
    named = re.match(r"node (\S+)", command)
    if named and not (ROOT / named[1]).exists():
        return f"there is no {named[1]}"
    preset = re.match(r"cmake .*--preset (\w+)", command)
    if preset and f'"name": "{preset[1]}"' not in (ROOT / "CMakePresets.json").read_text():
        return f"there is no preset {preset[1]}"
    if command.startswith("podman build") and not (ROOT / "Containerfile").exists():
        return "there is no Containerfile"
    package = re.search(r"qv-sensor_([\d.]+)_", command)
    if package and f"VERSION {package[1]}" not in (ROOT / "CMakeLists.txt").read_text():
        return f"the project has another version than {package[1]}"
    return None


class Page:
    """A folder and a graph of its own, in which a page's commands are run in their order."""

    def __init__(self, folder, domain, programs):
        self.folder = folder
        path = f"{programs}:{os.environ['PATH']}"
        self.environment = dict(os.environ, PATH=path, ROS_DOMAIN_ID=str(domain))
        self.robot = None
        self.errors, self.ran, self.left = [], 0, 0
        folder.mkdir(parents=True)
        for path in (ROOT / "maps").iterdir():
            shutil.copy(path, folder)
        (folder / "hall.yaml").write_text(HALL)
        (folder / "utm.yaml").write_text(HALL.replace("-5, -5", "500123.4, 4649776.25"))
        (folder / "hall.pgm").write_bytes(b"P5 10 10 255\n" + bytes([255] * 100))
        (folder / "examples").mkdir()
        shutil.copy(ROOT / "examples/own_robot.urdf", folder / "examples")

    def check(self, blocks):
        try:
            for block in blocks:
                for command in commands_of(block):
                    wrong = self.check_command(command)
                    if wrong:
                        self.errors.append(f"{block.where}: {command}: {wrong}")
        finally:
            if self.robot:
                self.robot.send_signal(signal.SIGINT)
                self.robot.communicate()

    def check_command(self, command):
        """Returns the error of a command; None if there is none."""
        if any(re.match(start, command) for start in NOT_RUN):
            self.left += 1
            return looked_at(command)
        self.ran += 1
        if "--from-ros2" in command and not self.robot:
            self.robot, _ = self.serve(A_ROBOT_ON_THE_GRAPH)
        return self.run(command)

    def start(self, command):
        # `source <(COMMAND)` hides COMMAND's failure, and a pipe that of all but the last.
        sourced = re.match(r"source <\((.*)\)$", command)
        whole = f"{sourced[1]} >/dev/null && {command}" if sourced else command
        return subprocess.Popen(
            ["bash", "-o", "pipefail", "-c", whole], cwd=self.folder, env=self.environment, text=True,
            start_new_session=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        )

    def serve(self, command):
        """Starts a server; returns it with its output up to its address."""
        process, said = self.start(f"exec {command} --port 0"), ""
        for line in process.stdout:
            said += line
            if "http://" in line:
                break
        return process, said

    def run(self, command):
        """Runs a command: `watch` for one table, a server until it has printed its address."""
        said, expected = "", [0]
        if " serve " in command:
            process, said = self.serve(command)
            process.send_signal(signal.SIGINT)
            expected = [130]
        else:
            process = self.start(command + " --once" if " watch " in command else command)
        if " check " in command and " --fault " in command:
            expected = [1]  # The fault is found.
        if re.search(r"\| head ", command):
            expected = [0, 141]  # The reader has enough.
        try:
            said += process.communicate(timeout=SECONDS)[0]
        except subprocess.TimeoutExpired:
            process.kill()
            return f"an end within {SECONDS} s expected:\n{said}{process.communicate()[0]}"
        if " | " in command and not said:
            return "an output expected"
        if process.returncode in expected:
            return None
        return f"status {expected} expected, {process.returncode} given:\n{said}"


def main(programs, work):
    shutil.rmtree(work, ignore_errors=True)
    blocks, pages = {}, {}
    for block in all_blocks():
        if block.language == "shell":
            blocks.setdefault(block.page, []).append(block)
    for number, name in enumerate(blocks):
        domain = 1 + (os.getpid() + number) % 100
        pages[name] = Page(work / name, domain, programs)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        list(pool.map(lambda name: pages[name].check(blocks[name]), pages))
    ran, left = sum(page.ran for page in pages.values()), sum(page.left for page in pages.values())
    print(f"{ran} commands run, {left} not")
    errors = [error for page in pages.values() for error in page.errors]
    print("\n".join(errors))
    return bool(errors)


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()))
