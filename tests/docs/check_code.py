"""Compiles the C++ in the pages for users and in the headers, and runs the Python where the package is;
follows the links of the pages.

Usage: check_code.py COMPILER [OPTION...]   (options of the compiler, such as -I)
"""

import difflib
import importlib.util
import re
import subprocess
import sys
import xml.dom.minidom

from blocks import ROOT, all_blocks, broken_links, header_blocks

# Declarations for blocks that are parts of a function. A block's own declarations hide these.
CONTEXT = """
#include <iostream>
#include <boost/make_shared.hpp>
#include "platform/ko/simulated_time.h"
#include "robot/world/virtual_robot.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/real/real_sensor_manager.h"
extern QV::sensor::RealSensorManager manager;
extern QV::robot::VirtualRobot robot;
extern const boost::shared_ptr<QV::OccupancyMap> map;
"""
# Read by programs that are not here.
OTHERS = {"yaml": "settings of Nav2 and slam_toolbox", "text": "what a program says"}
# Pages that show all files of a project, and what it says. Elsewhere a file with a folder in its name
# is a copy.
PROJECTS = {
    "docs/adding-a-sensor.md": "tests/package/cliff",
    "docs/guide.md": "tests/package/first_reading",
}
# Built or run by the test of the package.
ELSEWHERE = {"cmake", "shell"}


def copied_file(block):
    """The file that a block is a copy of; None if it is none."""
    project = PROJECTS.get(block.page)
    if project and block.language == "text":
        return f"{project}/expected.txt"
    if block.file and "/" in block.file:
        return block.file
    return f"{project}/{block.file}" if project and block.file else None


def difference(block, name):
    path = ROOT / name
    expected = path.read_text() if path.exists() else ""
    lines = difflib.unified_diff(
        expected.splitlines(), block.text.splitlines(), name, block.where, lineterm="", n=0
    )
    return "\n".join(lines)


def hidden_files(shown):
    """Files of the projects that no block shows."""
    files = [path for project in PROJECTS.values() for path in (ROOT / project).iterdir()]
    return {path.relative_to(ROOT).as_posix() for path in files} - shown


def source_of(blocks):
    """One source of all blocks, each in a namespace of its own."""
    includes, parts = set(), []
    for number, block in enumerate(blocks):
        own = re.findall(r"^#include .*$", block.text, re.M)
        includes.update(own)
        body = re.sub(r"^#(include|pragma) .*$", "", block.text, flags=re.M)
        if not re.search(r"^(int main|void \w+\(|inline|class|struct|namespace) ?", body, re.M):
            body = "void part() {\n" + f'#line {block.line} "{block.page}"\n' + body + "}\n"
        else:
            body = f'#line {block.line} "{block.page}"\n' + body
        parts.append(f"namespace block_{number} {{\n{body}}}\n")
    return CONTEXT + "\n".join(sorted(includes)) + "\n" + "".join(parts)


def compile_cpp(blocks, command):
    # A main in a namespace has no return of its own.
    warnings = ["-Wall", "-Wextra", "-Werror", "-Wno-unused", "-Wno-return-type"]
    options = ["-std=c++20", "-fsyntax-only", *warnings, "-x", "c++", "-"]
    done = subprocess.run([*command, *options], input=source_of(blocks), text=True, capture_output=True, cwd=ROOT)
    return done.stderr if done.returncode else ""


def run_python(block):
    """Runs a whole program and returns its error; a part of one, or without the package, is compiled only."""
    try:
        compile(block.text, block.where, "exec")
    except SyntaxError as error:
        return str(error)
    if not block.text.startswith("import") or not importlib.util.find_spec("qv_sensor"):
        return ""
    done = subprocess.run([sys.executable, "-c", block.text], text=True, capture_output=True, cwd=ROOT)
    return done.stderr if done.returncode else ""


def check(block):
    """Returns what is wrong with a block that is not C++."""
    if block.language == "python":
        return run_python(block)
    if block.language == "xml":
        xml.dom.minidom.parseString(block.text)
    elif block.language not in {*OTHERS, *ELSEWHERE}:
        return f"a language that is read expected, {block.language!r} given"
    return ""


def main(command):
    errors, to_compile, shown = [], header_blocks(), set()
    for block in all_blocks():
        copied = copied_file(block)
        if copied:
            shown.add(copied)
            wrong = difference(block, copied)
        elif block.language == "cpp":
            to_compile.append(block)
            wrong = ""
        else:
            wrong = check(block)
        if wrong:
            errors.append(f"{block.where}: {wrong}")
    errors += [f"{name}: a block that shows it expected" for name in hidden_files(shown)]
    errors += broken_links()
    errors.append(compile_cpp(to_compile, command))
    print(f"{len(to_compile)} blocks compiled")
    print("\n".join(errors))
    return any(errors)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
