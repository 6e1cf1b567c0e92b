#!/usr/bin/env python3
"""Breaks the code one small fault at a time, and says which faults no test notices.

mutants.py [--count N] [--seed N] [--log FILE] BUILD_DIR [FILE|FOLDER...]

N random ones of all faults in the named files, or in those that the branch changes, are tried; what
the compiler refuses is not counted. The tests are those of the folder that mirrors the file's own, or
of the nearest above that has any; if a fault lives there, those of the whole library. Each result is
a line of the log, and what stands there is not tried again. Every file is put back as it was.
Status 1 if a fault lives, 2 if the tests fail without one.
"""
import argparse
import collections
import os
import pathlib
import random
import re
import resource
import signal
import subprocess
import sys
import time



def more(number):
    return str(number + max(1, number // 4))


VALUE = r"([\w.:\[\]*&!]+(?:->\w+)*(?:\(\))?)"
CHANGES = [
    (r" <= ", " < "), (r" < ", " <= "), (r" >= ", " > "), (r" > ", " >= "),
    (r" == ", " != "), (r" != ", " == "), (r" && ", " || "), (r" \|\| ", " && "),
    (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" \+= ", " -= "), (r" -= ", " += "),
    (r"\bstd::min\b", "std::max"), (r"\bstd::max\b", "std::min"),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"\b(if \(|return )!", r"\1"), (r"\bif \(([^!=;]+)\)( \{| \w.*;)?$", r"if (!(\1))\2"),
    (r" \? ([^?:]+) : ([^?:;,)]+)", r" ? \2 : \1"),
    (r"(?<![\w.'\\])(\d[\d']*)(u?)(?![\w.'])", lambda m: more(int(m[1].replace("'", ""))) + m[2]),
    (r"(?<![\w.'\\])(\d+\.\d*)(f?)(?![\w.'])", lambda m: repr(round(float(m[1]) * 1.25 or 0.25, 9)) + m[2]),
    # Arguments exchanged, where their order matters.
    (rf"(?<!Add)(?<!Mul)(?<!M[ai][nx])(?<!m[ai][nx])([({{,] ?){VALUE}, {VALUE}(?=[,)}}])", r"\1\3, \2"),
    # A call, an assignment, an increment and a lock left out.
    (r"^(\s+)[a-z]\w*(?:(?:\.|->|::)\w+)*\([^;{]*\);$", r"\1;"),
    (r"^(\s+)[\w.>\[\]()*-]+ [-+*/|&]?= .*;$", r"\1;"),
    (r"^(\s+)\+\+.*;$", r"\1;"),
    (r"^(\s+)(?:const )?[\w:<>]*[lL]ock(?:_guard)?\b[\w:<>]* \w+[({].*;$", r"\1;"),
]
SKIPPED = re.compile(r"^\s*(//|\*|/\*|#|template|using |static_assert|namespace)|\bthrow\b|log::|\.reserve\(")
# A fault that hangs is noticed after this long, or after several times what the tests take.
SECONDS = 8
TIMES = 4
MOST_SECONDS = 200
SHARDS = 2
LIMITS = {resource.RLIMIT_AS: 4 << 30, resource.RLIMIT_FSIZE: 1 << 28, resource.RLIMIT_CORE: 0}

Fault = collections.namedtuple("Fault", "path number old new")


def faults_of(path):
    for number, line in enumerate(path.read_text().split("\n")):
        if SKIPPED.search(line):
            continue
        for pattern, change in CHANGES:
            for match in re.finditer(pattern, line):
                part = change(match) if callable(change) else match.expand(change)
                new = line[:match.start()] + part + line[match.end():]
                # What stands in quotes is left alone.
                if new != line and line[:match.start()].count('"') % 2 == 0:
                    yield Fault(path, number, line, new)


def git(*words):
    return subprocess.run(["git", *words], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                          check=False).stdout.split()


def changed():
    bases = (base for base in ("@{upstream}", "main", "HEAD") if git("rev-parse", "-q", "--verify", base))
    return git("diff", "--name-only", "--diff-filter=d", "--merge-base", next(bases))


def sources_of(names):
    paths = map(pathlib.Path, git("ls-files", "--", *names) if names else [])
    return [path for path in paths if path.suffix in (".h", ".cpp") and path.parts[0] != "tests"]


def programs_of(path):
    """The nearest first."""
    nearest = [folder for folder in ("tests" / path).parents if any(folder.glob("*_test.cpp"))][:1]
    top = pathlib.Path("tests") / path.parts[0]
    others = sorted({test.parent for test in top.rglob("*_test.cpp")})
    return list(dict.fromkeys("_".join(folder.parts[1:]) + "_tests" for folder in nearest + others))


def start_shard(build, program, index):
    settings = {"GTEST_TOTAL_SHARDS": SHARDS, "GTEST_SHARD_INDEX": index, "GTEST_FAIL_FAST": 1,
                "GTEST_BRIEF": 1}
    with open(f"{build}/shard.{index}", "wb") as output:
        return subprocess.Popen(
            [f"{build}/bin/{program}"], stdout=output, stderr=subprocess.STDOUT, start_new_session=True,
            env={**os.environ, **{name: str(value) for name, value in settings.items()}},
            preexec_fn=lambda: [resource.setrlimit(what, (most, most)) for what, most in LIMITS.items()])


def find_failure(build, program, seconds):
    """The test that fails, or None."""
    shards = [start_shard(build, program, index) for index in range(SHARDS)]
    end = time.monotonic() + seconds
    try:
        while time.monotonic() < end:
            states = [shard.poll() for shard in shards]
            for index in (index for index, state in enumerate(states) if state):
                text = pathlib.Path(f"{build}/shard.{index}").read_text(errors="replace")
                failed = re.search(r"^\[  FAILED  \] ([^\s,]+)", text, re.M)
                return f"{program}: {failed[1] if failed else 'a crash'}"
            if None not in states:
                return None
            time.sleep(0.02)
        return f"{program}: time-out"
    finally:
        for shard in (shard for shard in shards if shard.poll() is None):
            os.killpg(shard.pid, signal.SIGKILL)
            shard.wait()


class Tests:
    """The programs of a build tree, which pass without a fault."""

    def __init__(self, build):
        self.build = build
        self.seconds = {}

    def builds(self, program):
        # Not by CMake, which looks for new files each time, and that takes longer than most faults.
        return subprocess.run(["ninja", "-C", self.build, program], check=False,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0

    def check(self, program):
        if program in self.seconds:
            return
        failure = None if self.builds(program) else f"{program} does not build"
        start = time.monotonic()
        failure = failure or find_failure(self.build, program, MOST_SECONDS)
        if failure:
            print(f"without a fault: {failure}")
            sys.exit(2)
        self.seconds[program] = max(SECONDS, TIMES * (time.monotonic() - start))

    def judge(self, program):
        if not self.builds(program):
            return "refused"
        return find_failure(self.build, program, self.seconds[program]) or "alive"

    def try_fault(self, fault, programs):
        original = fault.path.read_text()
        lines = original.split("\n")
        lines[fault.number] = fault.new
        for program in programs:
            self.check(program)
            try:
                fault.path.write_text("\n".join(lines))
                result = self.judge(program)
            finally:
                fault.path.write_text(original)
            if result != "alive":
                break
        return result


class Log:
    """A line for each fault that was tried."""

    def __init__(self, path):
        self.path = path
        lines = path.read_text().splitlines() if path.exists() else []
        self.known = dict(reversed(line.split("\t", 1)) for line in lines)

    def add(self, fault, result):
        with self.path.open("a") as file:
            file.write(f"{result}\t{fault}\n")


def describe(fault):
    return f"{fault.path}:{fault.number + 1}\t{fault.old.strip()}\t{fault.new.strip()}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--log", type=pathlib.Path, default="/dev/null")
    parser.add_argument("build")
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(2))
    names = arguments.names or changed()
    faults = [fault for path in sources_of(names) for fault in faults_of(path) if programs_of(path)]
    # An order that lasts while other files change, so that a log can go on.
    faults.sort(key=lambda fault: random.Random(f"{arguments.seed} {describe(fault)}").random())
    tests, log, counts = Tests(arguments.build), Log(arguments.log), collections.Counter()
    for fault in faults:
        if counts["killed"] + counts["alive"] == arguments.count:
            break
        name = describe(fault)
        result = log.known.get(name)
        if not result:
            result = tests.try_fault(fault, programs_of(fault.path))
            log.add(name, result)
        counts[result if result in ("alive", "refused") else "killed"] += 1
        if result == "alive":
            print("alive: " + name.replace("\t", "\n  "), flush=True)
    print(f"{counts['killed']} of {counts['killed'] + counts['alive']} faults were noticed; "
          f"{counts['refused']} did not compile")
    sys.exit(1 if counts["alive"] else 0)


if __name__ == "__main__":
    main()
