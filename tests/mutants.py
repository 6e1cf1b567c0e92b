#!/usr/bin/env python3
"""Breaks the code one small fault at a time, and says which faults no test notices.

mutants.py [--most N] [--seed N] [--tests PROGRAM[,PROGRAM...]] FILE... BUILD_DIR

Each fault changes one operator, constant or statement of a FILE. The tests are the programs of the
folder that mirrors the file's own, or of the nearest one above that has any. Every file is put back
as it was. Status 1 if a fault lives, 2 if the tests fail without one.
"""
import argparse
import pathlib
import random
import re
import subprocess
import sys

OPERATORS = [
    (r" <= ", " < "), (r" < ", " <= "), (r" >= ", " > "), (r" > ", " >= "),
    (r" == ", " != "), (r" != ", " == "), (r" && ", " || "), (r" \|\| ", " && "),
    (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r"\btrue\b", "false"),
    (r"\bfalse\b", "true"), (r"\bif \(!", "if ("), (r"\b0\.5f\b", "0.6f"), (r"\b1\b", "2"),
    (r"^(\s+)[a-z]\w*(?:(?:\.|->|::)\w+)*\([^;{]*\);$", r"\1;"),
]
SKIPPED = re.compile(r"^\s*(//|\*|/\*|#|template|using |static_assert|namespace)|\bthrow\b|log::")
TIMEOUT = 120


def faults_of(path):
    """Each as line number, old line and new line."""
    for number, line in enumerate(path.read_text().split("\n")):
        if SKIPPED.search(line):
            continue
        for pattern, replacement in OPERATORS:
            for match in re.finditer(pattern, line):
                changed = line[:match.start()] + match.expand(replacement) + line[match.end():]
                yield number, line, changed


def programs_of(path):
    folder = pathlib.Path("tests") / path.parent
    while folder != pathlib.Path("tests"):
        name = "_".join(folder.parts[1:]) + "_tests"
        if any(folder.glob("*_test.cpp")):
            return [name]
        folder = folder.parent
    sys.exit(f"{path}: no tests in a folder that mirrors its own; name some with --tests")


def succeeds(command):
    try:
        done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              timeout=TIMEOUT, check=False)
    except subprocess.TimeoutExpired:
        return False
    return done.returncode == 0


def build_programs(build, programs):
    return subprocess.run(["cmake", "--build", build, "--target", *programs],
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False).returncode == 0


def passes(build, programs):
    return all(succeeds([f"{build}/bin/{program}", "--gtest_brief=1"]) for program in programs)


def try_fault(path, fault, build, programs):
    """"killed", "alive", or "refused" by the compiler."""
    number, _, changed = fault
    original = path.read_text()
    lines = original.split("\n")
    lines[number] = changed
    try:
        path.write_text("\n".join(lines))
        if not build_programs(build, programs):
            return "refused"
        return "alive" if passes(build, programs) else "killed"
    finally:
        path.write_text(original)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--most", type=int, default=20, help="faults a file")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--tests", default="")
    parser.add_argument("files", nargs="+", type=pathlib.Path)
    parser.add_argument("build")
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    counts = {"killed": 0, "alive": 0, "refused": 0}
    for path in arguments.files:
        programs = [p for p in arguments.tests.split(",") if p] or programs_of(path)
        if not build_programs(arguments.build, programs) or not passes(arguments.build, programs):
            print(f"{path}: {', '.join(programs)} fail without a fault")
            sys.exit(2)
        faults = list(faults_of(path))
        for fault in chance.sample(faults, min(arguments.most, len(faults))):
            result = try_fault(path, fault, arguments.build, programs)
            counts[result] += 1
            if result == "alive":
                print(f"{path}:{fault[0] + 1}: alive\n  - {fault[1].strip()}\n  + {fault[2].strip()}",
                      flush=True)
        build_programs(arguments.build, programs)
    tried = counts["killed"] + counts["alive"]
    print(f"{counts['killed']} of {tried} faults were noticed; {counts['refused']} did not compile")
    sys.exit(1 if counts["alive"] else 0)


if __name__ == "__main__":
    main()
